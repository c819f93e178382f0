// Disconnecting and forgetting at the user's request.
#include "unit/connection_info/tracker_fixture.h"

namespace kaz::test {
namespace {

const std::vector<TrackerCase> disconnectCases{
    {"DisconnectIsPublishedAtOnceAsByUser", from(connected, disconnect),
     "disconnected '' -100, causedByUser 'Home' @ 1000 ms"},
    {"RepeatedDisconnectKeepsTheFirstRecord", from(connected, statusDisconnected, wait(1s), disconnect),
     "disconnected '' -100, causedBySystem 'Home' @ 1000 ms"},
    {"DisconnectWithoutAConnectionRecordsNothing", from(fresh, disconnect), "disconnected '' -100"},
    {"DisconnectEndsTheAttempt", from(attempting, disconnect, wait(10s)),
     "disconnected '' -100, causedByUser 'Home' @ 100 ms"},

    {"ReportOlderThanTheDisconnectIsIgnored",
     from(connected, disconnect, bss("Home", -40), online(false), online(true)),
     "disconnected '' -100, causedByUser 'Home' @ 1000 ms"},
    {"ReportNewerThanTheDisconnectRestoresTheConnection",
     from(connected, disconnect, wait(1ns), statusConnected),
     "connected 'Home' -50, causedByUser 'Home' @ 1000 ms"},
    {"RestoredConnectionFollowsNetworkd",
     from(connected, disconnect, wait(1ns), statusConnected, look, online(false)),
     "connectingIP 'Home' -50, causedByUser 'Home' @ 1000 ms"},
    {"ReportOfTheDisconnectsTimeRestoresTheConnection", from(connected, disconnect, statusConnected),
     "connected 'Home' -50, causedByUser 'Home' @ 1000 ms"},

    {"PendingDisconnectMakesALaterDropByUser",
     from(connected, disconnect, wait(1s), statusConnected, wait(1s), statusDisconnected),
     "disconnected '' -100, causedByUser 'Home' @ 3000 ms"},
    {"AnsweredDisconnectMakesTheNextDropBySystem",
     from(connected, disconnect, wait(1s), statusConnected, statusDisconnected, statusConnected, wait(1s),
          statusDisconnected),
     "disconnected '' -100, causedBySystem 'Home' @ 3000 ms"},
    {"DisconnectStaysPendingWhenItsAnswerChangesNothing",
     from(connected, disconnect, statusDisconnected, wait(1s), statusConnected, statusDisabled),
     "disconnected '' -100, causedByUser 'Home' @ 2000 ms"},
    {"ConnectCancelsThePendingDisconnect",
     from(connected, disconnect, attempt("Home"), wait(1s), statusConnecting, statusDisconnected),
     "disconnected '' -100, causedBySystem 'Home' @ 2000 ms", std::nullopt,
     debug("Disconnected after attempted connection to ssid=\"Home\"")},
    {"SelectionBySupplicantCancelsThePendingDisconnect",
     from(connected, disconnect, wait(1s), select("Cafe"), statusConnecting, statusDisconnected),
     "disconnected '' -100, causedBySystem 'Cafe' @ 2000 ms", std::nullopt,
     debug("Disconnected after attempted connection to ssid=\"Cafe\"")},
    {"StoppedSupplicantCancelsThePendingDisconnect",
     from(connected, disconnect, supplicantStops, bss("Home"), statusConnected, wait(1s), statusDisconnected),
     "disconnected '' -100, causedBySystem 'Home' @ 2000 ms"},
};

const std::vector<TrackerCase> forgettingCases{
    {"ForgettingTheNetworkInUseIsADisconnect", from(connected, forget("Home")),
     "disconnected '' -100, causedByUser 'Home' @ 1000 ms"},
    {"ForgettingTheNetworkInUseStaysPending",
     from(connected, forget("Home"), look, wait(1s), statusConnected, statusDisconnected),
     "disconnected '' -100, causedByUser 'Home' @ 2000 ms"},
    {"ForgettingTheRequestedNetworkEndsTheAttempt", from(fresh, attempt("Home"), forget("Home")),
     "disconnected '' -100, causedByUser 'Home' @ 0 ms"},
    {"ForgettingAnotherNetworkWhileConnectedHasNoEffect", from(connected, forget("Cafe"), forget("")),
     "connected 'Home' -50"},
    {"ForgettingADroppedNetworkMakesTheDropByUserAndRenewsItsTime",
     from(connected, statusDisconnected, wait(5s), forget("Home")),
     "disconnected '' -100, causedByUser 'Home' @ 6000 ms"},
    {"ForgettingAnotherNetworkThanTheDroppedHasNoEffect",
     from(connected, statusDisconnected, wait(5s), forget("home"), forget("")),
     "disconnected '' -100, causedBySystem 'Home' @ 1000 ms"},
    {"ForgettingANetworkDisconnectedByUserKeepsItsTime",
     from(connected, disconnect, wait(5s), forget("Home")),
     "disconnected '' -100, causedByUser 'Home' @ 1000 ms"},
    {"ForgettingInANewTrackerHasNoEffect", from(fresh, forget("Home"), forget("")), "disconnected '' 0"},
    // The BSS without a name has the name of a disconnected record, and lends it its signal.
    {"EmptySsidsAreEqual", from(fresh, bss(""), statusConnecting, wait(1s), forget("")),
     "disconnected '' -50, causedByUser '' @ 1000 ms"},
};

INSTANTIATE_TEST_SUITE_P(DisconnectRequest, Tracker, ::testing::ValuesIn(disconnectCases), nameOf);
INSTANTIATE_TEST_SUITE_P(Forgetting, Tracker, ::testing::ValuesIn(forgettingCases), nameOf);

}  // namespace
}  // namespace kaz::test
