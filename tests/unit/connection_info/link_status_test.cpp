// The published state while no attempt is pending: it follows the supplicant, networkd and the signal.
#include "unit/connection_info/tracker_fixture.h"

#include <memory>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class LinkStatus : public TrackerTest {};
class Signal : public TrackerTest {};

TEST_F(LinkStatus, NewTrackerIsDisconnectedWithSignalZero) {
    EXPECT_EQ(published(), "disconnected '' 0");
    EXPECT_EQ(tracker.getConnectionInfo(), ConnectionInfo());
    EXPECT_EQ(tracker.getConnectionInfo().disconnectTime, FakeClock::TimePoint());
}

TEST_F(LinkStatus, StatusWithoutABssHasNoEffect) {
    for (const auto status : {SupplicantStatus::Connecting, SupplicantStatus::Connected}) {
        tracker.setSupplicantStatus(status);
        EXPECT_EQ(published(), "disconnected '' 0") << ::testing::PrintToString(status);
    }
}

TEST_F(LinkStatus, LinkSetUpIsConnectingWifi) {
    becomeConnecting("Home");
    EXPECT_EQ(published(), "connectingWifi 'Home' -50");
}

TEST_F(LinkStatus, OrderOfStatusAndBssDoesNotMatter) {
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.setCurrentBss(bss("Home"));
    EXPECT_EQ(published(), "connectingWifi 'Home' -50");
}

TEST_F(LinkStatus, LinkIsConnectingIpUntilNetworkdIsOnline) {
    becomeConnectingIP("Home");
    EXPECT_EQ(published(), "connectingIP 'Home' -50");
    tracker.setNetworkdIsOnline(true);
    EXPECT_EQ(published(), "connected 'Home' -50");
    tracker.setNetworkdIsOnline(false);
    EXPECT_EQ(published(), "connectingIP 'Home' -50");
}

TEST_F(LinkStatus, NetworkdIsIgnoredWhileTheLinkIsNotUp) {
    tracker.setNetworkdIsOnline(true);
    EXPECT_EQ(published(), "disconnected '' 0");
    becomeConnecting("Home");
    EXPECT_EQ(published(), "connectingWifi 'Home' -50");
}

TEST_F(LinkStatus, StatusBelowConnectingIsADropBySystem) {
    for (const auto status :
         {noReportYet, SupplicantStatus::InterfaceDisabled, SupplicantStatus::Disconnected}) {
        const auto ownClock = std::make_shared<FakeClock>();
        wifi::ConnectionInfoHelper fresh(ownClock);
        fresh.setCurrentBss(bss("Home"));
        fresh.setSupplicantStatus(SupplicantStatus::Connected);
        ownClock->advance(1s);
        fresh.setSupplicantStatus(status);
        EXPECT_EQ(describe(fresh.getConnectionInfo()),
                  "disconnected '' -100, causedBySystem 'Home' @ 1000 ms")
            << ::testing::PrintToString(status);
    }
}

TEST_F(LinkStatus, ReturnToLinkSetUpIsNoDisconnect) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(published(), "connectingWifi 'Home' -50");
}

TEST_F(LinkStatus, UnknownStatusHasNoEffect) {
    becomeConnected("Home");
    for (const int number : {-1, 5, 1000}) {
        tracker.setSupplicantStatus(static_cast<SupplicantStatus>(number));
        EXPECT_EQ(published(), "connected 'Home' -50") << number;
        tracker.setSignalStrength(-60);
        EXPECT_EQ(published(), "connected 'Home' -60") << number;
        tracker.setSignalStrength(-50);
    }
}

TEST_F(LinkStatus, LinkToAnotherNetworkRecordsADisconnectBySystem) {
    becomeConnected("Home");
    tracker.setCurrentBss(bss("Cafe", -66));
    EXPECT_EQ(published(), "connected 'Cafe' -66, causedBySystem 'Home' @ 1000 ms");
}

TEST_F(LinkStatus, LinkAfterADisconnectKeepsItsRecord) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(1s);
    tracker.setCurrentBss(bss("Cafe"));
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -50, causedBySystem 'Home' @ 1000 ms");
}

TEST_F(LinkStatus, AnotherBssOfTheNetworkChangesOnlyTheSignal) {
    becomeConnected("Home");
    tracker.setCurrentBss(bss("Home", -77));
    EXPECT_EQ(published(), "connected 'Home' -77");
}

TEST_F(LinkStatus, ClearedBssKeepsTheRecordUntilTheNextStatus) {
    becomeConnected("Home");
    tracker.setCurrentBss(std::nullopt);
    EXPECT_EQ(published(), "connected 'Home' -50");
    tracker.setNetworkdIsOnline(false);
    EXPECT_EQ(published(), "connected 'Home' -50") << "nothing is decided without a BSS";
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 1000 ms");
}

TEST_F(LinkStatus, BssWithoutSsidIsPublishedWithAnEmptySsid) {
    tracker.setCurrentBss(bss("", -70));
    EXPECT_EQ(published(), "disconnected '' -70") << "the names are equal, so the signal counts";
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connectingIP '' -70");
}

TEST_F(Signal, SignalIsThatOfTheBss) {
    becomeConnected("Home");
    tracker.setSignalStrength(-33);
    EXPECT_EQ(published(), "connected 'Home' -33");
}

TEST_F(Signal, SignalWithoutABssIsIgnored) {
    tracker.setSignalStrength(-33);
    EXPECT_EQ(published(), "disconnected '' 0");
    becomeConnected("Home");
    tracker.setCurrentBss(std::nullopt);
    tracker.setSignalStrength(-33);
    EXPECT_EQ(published(), "connected 'Home' -50");
    tracker.setCurrentBss(bss("Home", -55));
    EXPECT_EQ(published(), "connected 'Home' -55");
}

TEST_F(Signal, SignalOfAnotherNetworksBssIsKeptForThatNetwork) {
    becomeConnected("Home");
    tracker.notifyAboutConnectionAttempt("Cafe");
    tracker.setSignalStrength(-33);
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -100, causedByUser 'Home' @ 1000 ms");
    clock->advance(2s);
    EXPECT_EQ(tracker.getConnectionInfo().signal, -33) << "back on Home, whose BSS has that signal";
}

TEST_F(Signal, SignalDoesNotRenewTheBss) {
    tracker.setCurrentBss(bss("Home"));
    clock->advance(1ns);
    tracker.notifyAboutConnectionAttempt("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    tracker.setSignalStrength(-33);
    EXPECT_EQ(published(), "connectingWifi 'Home' -33");
}

TEST_F(Signal, DisconnectedRecordHasNoSignal) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    tracker.setSignalStrength(-33);
    EXPECT_EQ(tracker.getConnectionInfo().signal, wifi::Communicator::NoSignaldBm);
}

}  // namespace
}  // namespace kaz::test
