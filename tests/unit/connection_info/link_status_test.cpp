// The published state while no attempt is pending: it follows the supplicant, networkd and the signal.
#include "unit/connection_info/tracker_fixture.h"

namespace kaz::test {
namespace {

const std::vector<TrackerCase> linkCases{
    {"NewTrackerIsDisconnectedWithSignalZero", fresh, "disconnected '' 0"},
    {"LinkSetUpWithoutABssHasNoEffect", from(fresh, statusConnecting), "disconnected '' 0"},
    {"LinkWithoutABssHasNoEffect", from(fresh, statusConnecting, look, statusConnected), "disconnected '' 0"},
    {"LinkSetUpIsConnectingWifi", connecting, "connectingWifi 'Home' -50"},
    {"OrderOfStatusAndBssDoesNotMatter", from(fresh, statusConnecting, bss("Home")),
     "connectingWifi 'Home' -50"},
    {"LinkIsConnectingIpUntilNetworkdIsOnline", connectingIP, "connectingIP 'Home' -50"},
    {"LinkIsConnectedWhenNetworkdIsOnline", from(connectingIP, look, online(true)), "connected 'Home' -50"},
    {"LinkIsConnectingIpAfterNetworkdWasOnline", from(connectingIP, look, online(true), look, online(false)),
     "connectingIP 'Home' -50"},
    {"NetworkdIsIgnoredWithoutALink", from(fresh, online(true)), "disconnected '' 0"},
    {"NetworkdIsIgnoredDuringLinkSetUp", from(fresh, online(true), look, bss("Home"), statusConnecting),
     "connectingWifi 'Home' -50"},

    {"NoStatusIsADropBySystem", from(connectingIP, statusMissing),
     "disconnected '' -100, causedBySystem 'Home' @ 1000 ms"},
    {"DisabledInterfaceIsADropBySystem", from(connectingIP, statusDisabled),
     "disconnected '' -100, causedBySystem 'Home' @ 1000 ms"},
    {"DisconnectedStatusIsADropBySystem", from(connectingIP, statusDisconnected),
     "disconnected '' -100, causedBySystem 'Home' @ 1000 ms"},
    {"ReturnToLinkSetUpIsNoDisconnect", from(connected, statusConnecting), "connectingWifi 'Home' -50"},
    {"LinkToAnotherNetworkRecordsADisconnectBySystem", from(connected, bss("Cafe", -66)),
     "connected 'Cafe' -66, causedBySystem 'Home' @ 1000 ms"},
    {"LinkAfterADisconnectKeepsItsRecord",
     from(connected, statusDisconnected, wait(1s), bss("Cafe"), statusConnecting),
     "connectingWifi 'Cafe' -50, causedBySystem 'Home' @ 1000 ms"},
    {"AnotherBssOfTheNetworkChangesOnlyTheSignal", from(connected, bss("Home", -77)), "connected 'Home' -77"},

    {"ClearedBssKeepsTheRecord", from(connected, noBss), "connected 'Home' -50"},
    {"NothingIsDecidedWithoutABss", from(connected, noBss, look, online(false)), "connected 'Home' -50"},
    {"ClearedBssKeepsTheRecordUntilTheNextStatus",
     from(connected, noBss, look, online(false), look, statusDisconnected),
     "disconnected '' -100, causedBySystem 'Home' @ 1000 ms"},
    // The names are equal, so the signal counts.
    {"BssWithoutSsidLendsItsSignalToADisconnectedRecord", from(fresh, bss("", -70)), "disconnected '' -70"},
    {"BssWithoutSsidIsPublishedWithAnEmptySsid", from(fresh, bss("", -70), look, statusConnected),
     "connectingIP '' -70"},
};

const std::vector<TrackerCase> signalCases{
    {"SignalIsThatOfTheBss", from(connected, signal(-33)), "connected 'Home' -33"},
    {"SignalWithoutAnyBssIsIgnored", from(fresh, signal(-33)), "disconnected '' 0"},
    {"SignalAfterTheBssWasClearedIsIgnored", from(connected, noBss, signal(-33)), "connected 'Home' -50"},
    {"NextBssBringsItsSignal", from(connected, noBss, signal(-33), look, bss("Home", -55)),
     "connected 'Home' -55"},
    {"SignalOfAnotherNetworksBssIsNotPublished", from(connected, attempt("Cafe"), signal(-33)),
     "connectingWifi 'Cafe' -100, causedByUser 'Home' @ 1000 ms", 2000ms},
    {"SignalOfAnotherNetworksBssIsKeptForThatNetwork",
     from(connected, attempt("Cafe"), signal(-33), look, wait(2s)),
     "connected 'Home' -33, causedBySystem 'Cafe' @ 3000 ms", std::nullopt,
     warning(R"(No response from wpa_supplicant, assuming we are disconnected from ssid="Cafe")")},
    {"SignalDoesNotRenewTheBss",
     from(fresh, bss("Home"), wait(1ns), attempt("Home"), statusConnected, signal(-33)),
     "connectingWifi 'Home' -33", 2000ms},
    {"DisconnectedRecordHasNoSignal", from(connected, statusDisconnected, signal(-33)),
     "disconnected '' -100, causedBySystem 'Home' @ 1000 ms"},
};

INSTANTIATE_TEST_SUITE_P(LinkStatus, Tracker, ::testing::ValuesIn(linkCases), nameOf);
INSTANTIATE_TEST_SUITE_P(Signal, Tracker, ::testing::ValuesIn(signalCases), nameOf);

class LinkStatus : public TrackerTest {};

TEST_F(LinkStatus, NewTrackerHasANewRecord) {
    EXPECT_EQ(tracker.getConnectionInfo(), ConnectionInfo());
    EXPECT_EQ(tracker.getConnectionInfo().disconnectTime, FakeClock::TimePoint());
}

TEST_F(LinkStatus, UnknownStatusHasNoEffect) {
    happen(connected);
    for (const int number : {-1, 5, 1000}) {
        happen({status(static_cast<SupplicantStatus>(number))});
        EXPECT_EQ(published(), "connected 'Home' -50") << number;
        happen({signal(-60)});
        EXPECT_EQ(published(), "connected 'Home' -60") << number;
        happen({signal(-50)});
    }
}

}  // namespace
}  // namespace kaz::test
