// How an attempt begins, and which reports of the supplicant end it.
#include "unit/connection_info/tracker_fixture.h"

namespace kaz::test {
namespace {

const LogRecord failedAtHome = debug("Disconnected after attempted connection to ssid=\"Home\"");
const LogRecord connectedElsewhere =
    warning(R"(Connected to ssid="Cafe" while attempting to connect to ssid="Home")");

const std::vector<TrackerCase> attemptCases{
    {"AttemptIsPublishedAtOnce", from(fresh, attempt("Home")), "connectingWifi 'Home' -100", 2000ms},
    {"AttemptEndsTheFormerConnectionByUser", from(connected, attempt("Cafe")),
     "connectingWifi 'Cafe' -100, causedByUser 'Home' @ 1000 ms", 2000ms},
    {"NewAttemptReplacesTheFormerWithoutALog", from(attempting, attempt("Cafe"), wait(100ms)),
     "connectingWifi 'Cafe' -100, causedByUser 'Home' @ 100 ms", 1900ms},

    {"SuccessIsConnectedWhileNetworkdIsOnline",
     from(fresh, online(true), attempt("Home"), wait(100ms), bss("Home"), statusConnected),
     "connected 'Home' -50"},
    {"SuccessEndsTheAttempt", from(attempting, bss("Home"), statusConnected, wait(1s), statusDisconnected),
     "disconnected '' -100, causedBySystem 'Home' @ 1100 ms"},
    {"LinkSetUpThatEndsDisconnectedIsFailure",
     from(attempting, statusConnecting, wait(1h), statusDisconnected),
     "disconnected '' -100, causedBySystem 'Home' @ 3600100 ms", std::nullopt, failedAtHome},
    {"LinkSetUpThatEndsWithTheInterfaceDisabledIsFailure",
     from(attempting, statusConnecting, wait(1h), statusDisabled),
     "disconnected '' -100, causedBySystem 'Home' @ 3600100 ms", std::nullopt, failedAtHome},
    {"LinkSetUpThatEndsWithoutAStatusIsFailure", from(attempting, statusConnecting, wait(1h), statusMissing),
     "disconnected '' -100, causedBySystem 'Home' @ 3600100 ms", std::nullopt, failedAtHome},
    {"FailureEndsTheAttempt",
     from(attempting, statusConnecting, statusDisconnected, bss("Cafe"), statusConnected),
     "connectingIP 'Cafe' -50, causedBySystem 'Home' @ 100 ms", std::nullopt, failedAtHome},
    {"FailureNamesItsNetworkInRedactableForm",
     from(fresh, attempt("a\"b\\"), statusConnecting, statusDisconnected),
     "disconnected '' -100, causedBySystem 'a\"b\\' @ 0 ms", std::nullopt,
     debug("Disconnected after attempted connection to ssid=\"a\\\"b\\\\\"")},
    {"NegativeStatusAfterLinkSetUpDropsTheAttemptButKeepsTheRecord",
     from(attempting, statusConnecting, status(static_cast<SupplicantStatus>(-1))),
     "connectingWifi 'Home' -100", std::nullopt, failedAtHome},

    {"DisconnectedBeforeLinkSetUpKeepsTheAttempt", from(attempting, statusDisconnected),
     "connectingWifi 'Home' -100", 1900ms},
    {"StatusOlderThanTheAttemptIsIgnored",
     from(fresh, statusConnecting, wait(1ns), attempt("Home"), bss("Cafe")), "connectingWifi 'Home' -100",
     2000ms},
    {"SignalOfABssOlderThanTheAttemptCounts",
     from(fresh, bss("Home", -70), wait(1ns), attempt("Home"), statusConnected), "connectingWifi 'Home' -70",
     2000ms},
    {"BssOlderThanTheAttemptIsIgnored",
     from(fresh, bss("Home", -70), wait(1ns), attempt("Home"), statusConnected, look, bss("Home", -60)),
     "connectingIP 'Home' -60"},
    {"BssOfTheAttemptsTimeCounts", from(fresh, bss("Home", -70), attempt("Home"), statusConnected),
     "connectingIP 'Home' -70"},
    {"OlderBssOfAnotherNetworkIsIgnored",
     from(fresh, bss("Cafe"), wait(1ns), attempt("Home"), wait(100ms), statusConnected),
     "connectingWifi 'Home' -100", 1900ms},
    {"StatusBeforeTheEndOfAScanIsIgnored",
     from(attempting, scanning(true), statusConnected, wait(1ns), scanning(false), bss("Home")),
     "connectingWifi 'Home' -50", 2000ms},
    {"StatusAfterTheEndOfAScanCounts",
     from(attempting, scanning(true), statusConnected, wait(1ns), scanning(false), bss("Home"), look,
          statusConnected),
     "connectingIP 'Home' -50"},
    {"CompletionWithoutABssKeepsTheAttempt",
     from(attempting, noBss, statusDisconnected, look, statusConnected), "connectingWifi 'Home' -100",
     1900ms},
    {"LinkSetUpWithoutABssKeepsTheAttempt",
     from(attempting, noBss, statusDisconnected, look, statusConnected, look, statusConnecting),
     "connectingWifi 'Home' -100"},
    {"LinkSetUpOnTheRequestedBssKeepsTheAttempt", from(attempting, bss("Home", -44), statusDisconnected),
     "connectingWifi 'Home' -44", 1900ms},
    {"IdleSupplicantOnAnotherBssKeepsTheAttempt", from(attempting, bss("Cafe"), statusDisconnected),
     "connectingWifi 'Home' -100", 1900ms},

    {"CompletionOnAnotherNetworkEndsTheAttemptWithAWarning", from(attempting, bss("Cafe"), statusConnected),
     "connectingIP 'Cafe' -50, causedBySystem 'Home' @ 100 ms", std::nullopt, connectedElsewhere},
    {"LinkSetUpOnAnotherNetworkEndsTheAttemptWithAWarning", from(attempting, bss("Cafe"), statusConnecting),
     "connectingWifi 'Cafe' -50, causedBySystem 'Home' @ 100 ms", std::nullopt, connectedElsewhere},
    {"WarningNamesBothNetworksInRedactableForm",
     from(fresh, attempt("a\"b"), bss(std::string("c\\\0\xff", 4)), statusConnected),
     std::string("connectingIP 'c\\\0\xff' -50, causedBySystem 'a\"b' @ 0 ms", 52), std::nullopt,
     warning("Connected to " + std::string("ssid=\"c\\\\\0\xff\"", 12) +
             " while attempting to connect to ssid=\"a\\\"b\"")},

    {"SupplicantChosenAttemptEndsTheFormerConnectionBySystem", from(connected, select("Cafe")),
     "connectingWifi 'Cafe' -100, causedBySystem 'Home' @ 1000 ms", 2000ms},
    {"SupplicantChosenAttemptRestartsTheNetworkInUse", from(connected, select("Home")),
     "connectingWifi 'Home' -50, causedBySystem 'Home' @ 1000 ms", 2000ms},
    {"SelectionOfTheRequestedNetworkKeepsTheAttempt", from(attempting, select("Home")),
     "connectingWifi 'Home' -100", 1900ms},
    {"SelectionOfAnotherNetworkReplacesTheAttempt", from(attempting, select("Cafe")),
     "connectingWifi 'Cafe' -100, causedBySystem 'Home' @ 100 ms", 2000ms},
    {"SelectionWithoutAnSsidKeepsTheAttempt", from(attempting, selectNameless), "connectingWifi 'Home' -100",
     1900ms},
    {"SelectionWithoutAnSsidBeginsNoAttempt", from(connected, selectNameless), "connected 'Home' -50"},
};

INSTANTIATE_TEST_SUITE_P(Attempt, Tracker, ::testing::ValuesIn(attemptCases), nameOf);

class Attempt : public TrackerTest {};

TEST_F(Attempt, CompletionOnTheRequestedNetworkIsSuccess) {
    happen(from(attempting, bss("Home", -61), statusConnecting));
    EXPECT_EQ(published(), "connectingWifi 'Home' -61");
    happen({statusConnected});
    EXPECT_EQ(published(), "connectingIP 'Home' -61");
    EXPECT_EQ(timeLeft(), std::nullopt);
    happen({online(true)});
    EXPECT_EQ(published(), "connected 'Home' -61");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(Attempt, StatusOfTheAttemptsTimeCounts) {
    happen({statusConnecting, attempt("Home")});
    EXPECT_EQ(timeLeft(), 2000ms) << "nothing was decided yet";
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_EQ(timeLeft(), std::nullopt) << "link set-up was seen";
}

TEST_F(Attempt, SsidsAreComparedByteByByte) {
    const std::string nulInside("Home\0a", 6);
    for (const std::string& other :
         {std::string("home"), std::string("Home "), nulInside, std::string("Hom")}) {
        log.clear();
        happen(from(attempting, bss(other), statusConnected));
        EXPECT_EQ(log.texts(spdlog::level::warn).size(), 1U) << testing::PrintToString(other);
        EXPECT_EQ(tracker.getConnectionInfo().ssid, other) << testing::PrintToString(other);
    }
}

}  // namespace
}  // namespace kaz::test
