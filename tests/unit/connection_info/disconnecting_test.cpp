// Disconnecting and forgetting at the user's request.
#include "unit/connection_info/tracker_fixture.h"

#include <optional>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class DisconnectRequest : public TrackerTest {};
class Forgetting : public TrackerTest {};

TEST_F(DisconnectRequest, DisconnectIsPublishedAtOnceAsByUser) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, RepeatedDisconnectKeepsTheFirstRecord) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(1s);
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, DisconnectWithoutAConnectionRecordsNothing) {
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(published(), "disconnected '' -100");
}

TEST_F(DisconnectRequest, DisconnectEndsTheAttempt) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(100ms);
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(timeLeft(), std::nullopt);
    clock->advance(10s);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 100 ms");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(DisconnectRequest, ReportOlderThanTheDisconnectIsIgnored) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setCurrentBss(bss("Home", -40));
    tracker.setNetworkdIsOnline(false);
    tracker.setNetworkdIsOnline(true);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, ReportNewerThanTheDisconnectRestoresTheConnection) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(1ns);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connected 'Home' -50, causedByUser 'Home' @ 1000 ms");
    tracker.setNetworkdIsOnline(false);
    EXPECT_EQ(published(), "connectingIP 'Home' -50, causedByUser 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, ReportOfTheDisconnectsTimeRestoresTheConnection) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connected 'Home' -50, causedByUser 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, PendingDisconnectMakesALaterDropByUser) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 3000 ms");
}

TEST_F(DisconnectRequest, AnsweredDisconnectMakesTheNextDropBySystem) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 3000 ms");
}

TEST_F(DisconnectRequest, DisconnectStaysPendingWhenItsAnswerChangesNothing) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    tracker.setSupplicantStatus(SupplicantStatus::InterfaceDisabled);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 2000 ms");
}

TEST_F(DisconnectRequest, ConnectCancelsThePendingDisconnect) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 2000 ms");
}

TEST_F(DisconnectRequest, SelectionBySupplicantCancelsThePendingDisconnect) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(1s);
    tracker.setCurrentNetworkSsid("Cafe");
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Cafe' @ 2000 ms");
}

TEST_F(DisconnectRequest, StoppedSupplicantCancelsThePendingDisconnect) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setSupplicantState(false);
    reportSuccess("Home");
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 2000 ms");
}

TEST_F(Forgetting, ForgettingTheNetworkInUseIsADisconnect) {
    becomeConnected("Home");
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 1000 ms");
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 2000 ms")
        << "the request was pending";
}

TEST_F(Forgetting, ForgettingTheRequestedNetworkEndsTheAttempt) {
    tracker.notifyAboutConnectionAttempt("Home");
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(timeLeft(), std::nullopt);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 0 ms");
}

TEST_F(Forgetting, ForgettingAnotherNetworkWhileConnectedHasNoEffect) {
    becomeConnected("Home");
    tracker.notifyAboutForget("Cafe");
    tracker.notifyAboutForget("");
    EXPECT_EQ(published(), "connected 'Home' -50");
}

TEST_F(Forgetting, ForgettingADroppedNetworkMakesTheDropByUserAndRenewsItsTime) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(5s);
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 6000 ms");
}

TEST_F(Forgetting, ForgettingAnotherNetworkThanTheDroppedHasNoEffect) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(5s);
    tracker.notifyAboutForget("home");
    tracker.notifyAboutForget("");
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 1000 ms");
}

TEST_F(Forgetting, ForgettingANetworkDisconnectedByUserKeepsItsTime) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(5s);
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 1000 ms");
}

TEST_F(Forgetting, ForgettingInANewTrackerHasNoEffect) {
    tracker.notifyAboutForget("Home");
    tracker.notifyAboutForget("");
    EXPECT_EQ(published(), "disconnected '' 0");
}

TEST_F(Forgetting, EmptySsidsAreEqual) {
    becomeConnecting("");
    tracker.notifyAboutForget("");
    EXPECT_EQ(published(), "disconnected '' -50, causedByUser '' @ 1000 ms")
        << "the BSS without a name has the name of a disconnected record, and lends it its signal";
}

}  // namespace
}  // namespace kaz::test
