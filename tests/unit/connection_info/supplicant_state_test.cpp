// The supplicant starts and stops.
#include "unit/connection_info/tracker_fixture.h"

#include <optional>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class SupplicantStopped : public TrackerTest {};
class SupplicantStarted : public TrackerTest {};

TEST_F(SupplicantStopped, StoppedSupplicantLeavesANewRecordWithoutASignal) {
    becomeConnected("Home");
    tracker.notifyAboutConnectionAttempt("Cafe");
    tracker.setSupplicantState(false);
    EXPECT_EQ(published(), "disconnected '' -100") << "the disconnect record is cleared, too";
}

TEST_F(SupplicantStopped, StoppedSupplicantEndsTheAttemptWithoutALog) {
    tracker.notifyAboutConnectionAttempt("Home");
    tracker.setSupplicantState(false);
    EXPECT_EQ(timeLeft(), std::nullopt);
    clock->advance(10s);
    EXPECT_EQ(published(), "disconnected '' -100");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(SupplicantStopped, StoppedSupplicantClearsTheBss) {
    becomeConnected("Home");
    tracker.setSupplicantState(false);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    tracker.setSignalStrength(-30);
    EXPECT_EQ(published(), "disconnected '' -100");
}

TEST_F(SupplicantStopped, StoppedSupplicantCountsAsADisabledInterface) {
    becomeConnected("Home");
    tracker.setSupplicantState(false);
    tracker.setCurrentBss(bss("Home"));
    EXPECT_EQ(published(), "disconnected '' -100") << "its status was reset";

    // This report has the time of the stop. An attempt of the same time counts it, but ends only by its timeout, because
    // no link set-up was seen.
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(published(), "connectingWifi 'Home' -50");
    clock->advance(2s);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 3000 ms");
}

TEST_F(SupplicantStopped, StoppedSupplicantEndsTheScan) {
    tracker.setScanning(true);
    tracker.setSupplicantState(false);
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(timeLeft(), 2000ms);
    tracker.setScanning(true);
    EXPECT_EQ(timeLeft(), std::nullopt) << "a new scan is a change";
}

TEST_F(SupplicantStopped, StoppedSupplicantKeepsNetworkdsState) {
    becomeConnected("Home");
    tracker.setSupplicantState(false);
    reportSuccess("Home");
    EXPECT_EQ(published(), "connected 'Home' -50");
}

TEST_F(SupplicantStarted, StartedSupplicantLeavesANewRecordWithSignalZero) {
    tracker.setSupplicantState(false);
    tracker.setSupplicantState(true);
    EXPECT_EQ(published(), "disconnected '' 0");
    EXPECT_EQ(tracker.getConnectionInfo(), ConnectionInfo());
}

TEST_F(SupplicantStarted, StartedSupplicantClearsTheDisconnectRecord) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    tracker.setSupplicantState(true);
    EXPECT_EQ(published(), "disconnected '' 0");
}

TEST_F(SupplicantStarted, StartedSupplicantKeepsTheFactsOfTheConnection) {
    becomeConnected("Home");
    tracker.setSupplicantState(true);
    EXPECT_EQ(published(), "connected 'Home' -50");
}

TEST_F(SupplicantStarted, StartedSupplicantKeepsTheAttempt) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(500ms);
    tracker.setSupplicantState(true);
    EXPECT_EQ(published(), "disconnected '' 0");
    EXPECT_EQ(timeLeft(), 1500ms);
    reportSuccess("Home");
    EXPECT_EQ(published(), "connectingIP 'Home' -50");
    EXPECT_EQ(timeLeft(), std::nullopt);
}

TEST_F(SupplicantStarted, StartedSupplicantKeepsTheScan) {
    tracker.setScanning(true);
    tracker.setSupplicantState(true);
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(timeLeft(), std::nullopt);
}

}  // namespace
}  // namespace kaz::test
