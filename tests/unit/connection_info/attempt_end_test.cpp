// How an attempt begins, and which reports of the supplicant end it.
#include "unit/connection_info/tracker_fixture.h"

#include <optional>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class Attempt : public TrackerTest {
  protected:
    // The clock advances, so that all later reports are newer.
    void attempt(const std::string& ssid) {
        tracker.notifyAboutConnectionAttempt(ssid);
        clock->advance(100ms);
    }
};

constexpr auto connectedElsewhere = R"(Connected to ssid="Cafe" while attempting to connect to ssid="Home")";

TEST_F(Attempt, AttemptIsPublishedAtOnce) {
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
}

TEST_F(Attempt, AttemptEndsTheFormerConnectionByUser) {
    becomeConnected("Old");
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(published(), "connectingWifi 'Home' -100, causedByUser 'Old' @ 1000 ms");
}

TEST_F(Attempt, NewAttemptReplacesTheFormerWithoutALog) {
    attempt("Home");
    attempt("Cafe");
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -100, causedByUser 'Home' @ 100 ms");
    EXPECT_EQ(timeLeft(), 1900ms);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, CompletionOnTheRequestedNetworkIsSuccess) {
    attempt("Home");
    tracker.setCurrentBss(bss("Home", -61));
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(published(), "connectingWifi 'Home' -61");
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connectingIP 'Home' -61");
    EXPECT_EQ(timeLeft(), std::nullopt);
    tracker.setNetworkdIsOnline(true);
    EXPECT_EQ(published(), "connected 'Home' -61");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, SuccessIsConnectedWhileNetworkdIsOnline) {
    tracker.setNetworkdIsOnline(true);
    attempt("Home");
    reportSuccess("Home");
    EXPECT_EQ(published(), "connected 'Home' -50");
}

TEST_F(Attempt, SuccessEndsTheAttempt) {
    attempt("Home");
    reportSuccess("Home");
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 1100 ms");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, EndOfLinkSetUpWithoutAConnectionIsFailure) {
    for (const auto status :
         {SupplicantStatus::Disconnected, SupplicantStatus::InterfaceDisabled, noReportYet}) {
        SCOPED_TRACE(::testing::PrintToString(status));
        log.clear();
        tracker.setSupplicantState(false);
        clock->advance(1s);
        attempt("Home");
        tracker.setSupplicantStatus(SupplicantStatus::Connecting);
        clock->advance(1h);
        tracker.setSupplicantStatus(status);
        const ConnectionInfo info = tracker.getConnectionInfo();
        EXPECT_EQ(info.status, ConnectionInfo::Status::disconnected);
        EXPECT_EQ(info.disconnectReason, ConnectionInfo::DisconnectReason::causedBySystem);
        EXPECT_EQ(info.disconnectSsid, "Home");
        EXPECT_EQ(log.records(),
                  (RecordingLog::Records{
                      {spdlog::level::debug, "Disconnected after attempted connection to ssid=\"Home\""}}));
    }
}

TEST_F(Attempt, FailureEndsTheAttempt) {
    attempt("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(timeLeft(), std::nullopt);
    reportSuccess("Cafe");
    EXPECT_EQ(published(), "connectingIP 'Cafe' -50, causedBySystem 'Home' @ 100 ms");
    EXPECT_EQ(log.records().size(), 1U);
}

TEST_F(Attempt, DisconnectedBeforeLinkSetUpKeepsTheAttempt) {
    attempt("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_EQ(timeLeft(), 1900ms);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, StatusOlderThanTheAttemptIsIgnored) {
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    clock->advance(1ns);
    tracker.notifyAboutConnectionAttempt("Home");
    tracker.setCurrentBss(bss("Cafe"));
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_EQ(timeLeft(), 2000ms) << "that link set-up was another's";
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, StatusOfTheAttemptsTimeCounts) {
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(timeLeft(), 2000ms) << "nothing was decided yet";
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_EQ(timeLeft(), std::nullopt) << "link set-up was seen";
}

TEST_F(Attempt, BssOlderThanTheAttemptIsIgnored) {
    tracker.setCurrentBss(bss("Home", -70));
    clock->advance(1ns);
    tracker.notifyAboutConnectionAttempt("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connectingWifi 'Home' -70") << "its signal counts all the same";
    EXPECT_EQ(timeLeft(), 2000ms);
    tracker.setCurrentBss(bss("Home", -60));
    EXPECT_EQ(published(), "connectingIP 'Home' -60");
}

TEST_F(Attempt, BssOfTheAttemptsTimeCounts) {
    tracker.setCurrentBss(bss("Home", -70));
    tracker.notifyAboutConnectionAttempt("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connectingIP 'Home' -70");
}

TEST_F(Attempt, OlderBssOfAnotherNetworkIsIgnored) {
    tracker.setCurrentBss(bss("Cafe"));
    clock->advance(1ns);
    attempt("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, ReportsBeforeTheEndOfAScanAreIgnored) {
    attempt("Home");
    tracker.setScanning(true);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    clock->advance(1ns);
    tracker.setScanning(false);
    tracker.setCurrentBss(bss("Home"));
    EXPECT_EQ(published(), "connectingWifi 'Home' -50");
    EXPECT_EQ(timeLeft(), 2000ms);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connectingIP 'Home' -50");
}

TEST_F(Attempt, CompletionWithoutABssKeepsTheAttempt) {
    attempt("Home");
    tracker.setCurrentBss(std::nullopt);
    for (const auto status :
         {SupplicantStatus::Disconnected, SupplicantStatus::Connected, SupplicantStatus::Connecting}) {
        tracker.setSupplicantStatus(status);
        EXPECT_EQ(published(), "connectingWifi 'Home' -100") << ::testing::PrintToString(status);
    }
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, LinkSetUpOnTheRequestedBssKeepsTheAttempt) {
    attempt("Home");
    tracker.setCurrentBss(bss("Home", -44));
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "connectingWifi 'Home' -44");
    EXPECT_EQ(timeLeft(), 1900ms);
}

TEST_F(Attempt, IdleSupplicantOnAnotherBssKeepsTheAttempt) {
    attempt("Home");
    tracker.setCurrentBss(bss("Cafe"));
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_EQ(timeLeft(), 1900ms);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, CompletionOnAnotherNetworkEndsTheAttemptWithAWarning) {
    attempt("Home");
    reportSuccess("Cafe");
    EXPECT_EQ(published(), "connectingIP 'Cafe' -50, causedBySystem 'Home' @ 100 ms");
    EXPECT_EQ(log.records(), (RecordingLog::Records{{spdlog::level::warn, connectedElsewhere}}));
    EXPECT_EQ(timeLeft(), std::nullopt);
}

TEST_F(Attempt, LinkSetUpOnAnotherNetworkEndsTheAttemptWithAWarning) {
    attempt("Home");
    tracker.setCurrentBss(bss("Cafe"));
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -50, causedBySystem 'Home' @ 100 ms");
    EXPECT_EQ(log.records(), (RecordingLog::Records{{spdlog::level::warn, connectedElsewhere}}));
    EXPECT_EQ(timeLeft(), std::nullopt);
}

TEST_F(Attempt, SsidsAreComparedByteByByte) {
    const std::string nulInside("Home\0a", 6);
    for (const std::string& other :
         {std::string("home"), std::string("Home "), nulInside, std::string("Hom")}) {
        log.clear();
        attempt("Home");
        reportSuccess(other);
        EXPECT_EQ(log.texts(spdlog::level::warn).size(), 1U) << testing::PrintToString(other);
        EXPECT_EQ(tracker.getConnectionInfo().ssid, other) << testing::PrintToString(other);
    }
}

TEST_F(Attempt, WarningNamesBothNetworksInRedactableForm) {
    attempt("a\"b");
    reportSuccess(std::string("c\\\0\xff", 4));
    const std::string elsewhere("ssid=\"c\\\\\0\xff\"", 12);
    ASSERT_EQ(log.records().size(), 1U);
    EXPECT_EQ(log.records().front().text,
              "Connected to " + elsewhere + " while attempting to connect to ssid=\"a\\\"b\"");
}

TEST_F(Attempt, FailureNamesItsNetworkInRedactableForm) {
    attempt("a\"b\\");
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(log.texts(),
              (std::vector<std::string>{"Disconnected after attempted connection to ssid=\"a\\\"b\\\\\""}));
}

TEST_F(Attempt, NegativeStatusAfterLinkSetUpDropsTheAttemptButKeepsTheRecord) {
    attempt("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.setSupplicantStatus(static_cast<SupplicantStatus>(-1));
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_EQ(log.texts(spdlog::level::debug).size(), 1U);
}

TEST_F(Attempt, SupplicantChosenAttemptEndsTheFormerConnectionBySystem) {
    becomeConnected("Old");
    tracker.setCurrentNetworkSsid("Home");
    EXPECT_EQ(published(), "connectingWifi 'Home' -100, causedBySystem 'Old' @ 1000 ms");
    EXPECT_EQ(timeLeft(), 2000ms);
}

TEST_F(Attempt, SupplicantChosenAttemptRestartsTheNetworkInUse) {
    becomeConnected("Home");
    tracker.setCurrentNetworkSsid("Home");
    EXPECT_EQ(published(), "connectingWifi 'Home' -50, causedBySystem 'Home' @ 1000 ms");
    EXPECT_EQ(timeLeft(), 2000ms);
}

TEST_F(Attempt, SelectionOfTheRequestedNetworkKeepsTheAttempt) {
    attempt("Home");
    tracker.setCurrentNetworkSsid("Home");
    EXPECT_EQ(timeLeft(), 1900ms);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
}

TEST_F(Attempt, SelectionOfAnotherNetworkReplacesTheAttempt) {
    attempt("Home");
    tracker.setCurrentNetworkSsid("Cafe");
    EXPECT_EQ(timeLeft(), 2000ms);
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -100, causedBySystem 'Home' @ 100 ms");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, SelectionWithoutAnSsidKeepsTheAttempt) {
    attempt("Home");
    tracker.setCurrentNetworkSsid(std::nullopt);
    EXPECT_EQ(timeLeft(), 1900ms);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
}

TEST_F(Attempt, SelectionWithoutAnSsidBeginsNoAttempt) {
    becomeConnected("Home");
    tracker.setCurrentNetworkSsid(std::nullopt);
    EXPECT_EQ(published(), "connected 'Home' -50");
    EXPECT_EQ(timeLeft(), std::nullopt);
}

}  // namespace
}  // namespace kaz::test
