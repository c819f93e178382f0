// How long an attempt lasts without a reaction of the supplicant.
#include "unit/connection_info/tracker_fixture.h"

#include <array>

namespace kaz::test {
namespace {

LogRecord noResponseFrom(const std::string& redactable) {
    return warning("No response from wpa_supplicant, assuming we are disconnected from " + redactable);
}
const LogRecord noResponseFromHome = noResponseFrom(R"(ssid="Home")");

const std::vector<TrackerCase> timeOutCases{
    {"TimeoutBeginsWithTwoSeconds", from(fresh, attempt("Home"), wait(1ms)), "connectingWifi 'Home' -100",
     1999ms},
    {"TimeoutCountsDown", from(fresh, attempt("Home"), wait(1ms), wait(1500ms)), "connectingWifi 'Home' -100",
     499ms},
    {"NoTimeoutRunsInANewTracker", fresh, "disconnected '' 0"},
    {"NoTimeoutRunsWhileConnected", connected, "connected 'Home' -50"},
    {"NoTimeoutRunsAfterADisconnect", from(connected, disconnect),
     "disconnected '' -100, causedByUser 'Home' @ 1000 ms"},

    {"ExpiredTimeoutEndsTheAttemptWithAWarning",
     from(fresh, statusDisconnected, wait(1s), attempt("Home"), wait(2s)),
     "disconnected '' -100, causedBySystem 'Home' @ 3000 ms", std::nullopt, noResponseFromHome},
    {"ExpiredTimeoutEndsTheAttemptOnce",
     from(fresh, statusDisconnected, wait(1s), attempt("Home"), wait(2s), look, wait(2s)),
     "disconnected '' -100, causedBySystem 'Home' @ 3000 ms", std::nullopt, noResponseFromHome},
    {"ExpiredTimeoutWithoutAnyReportEndsDisconnected", from(fresh, attempt("Home"), wait(2s)),
     "disconnected '' -100, causedBySystem 'Home' @ 2000 ms", std::nullopt, noResponseFromHome},
    {"TimeoutDoesNotExpireWithAMillisecondLeft", from(fresh, attempt("Home"), wait(1'999'000'000ns)),
     "connectingWifi 'Home' -100", 1ms},
    {"TimeoutExpiresWithLessThanAMillisecondLeft",
     from(fresh, attempt("Home"), wait(1'999'000'000ns), look, wait(1ns)),
     "disconnected '' -100, causedBySystem 'Home' @ 1999.000001 ms", std::nullopt, noResponseFromHome},
    {"ExpiredTimeoutPublishesTheConnectionThatTheSupplicantLastReported",
     from(connected, attempt("Cafe"), wait(2s)), "connected 'Home' -50, causedBySystem 'Cafe' @ 3000 ms",
     std::nullopt, noResponseFrom(R"(ssid="Cafe")")},

    {"ScanPausesTheTimeout", from(fresh, attempt("Home"), wait(1500ms), scanning(true), wait(1h)),
     "connectingWifi 'Home' -100"},
    {"EndOfAScanRestartsTheTimeout",
     from(fresh, attempt("Home"), wait(1500ms), scanning(true), wait(1h), look, scanning(false)),
     "connectingWifi 'Home' -100", 2000ms},
    {"TimeoutRestartedByAScanLasts",
     from(fresh, attempt("Home"), wait(1500ms), scanning(true), wait(1h), look, scanning(false),
          wait(1999ms)),
     "connectingWifi 'Home' -100", 1ms},
    {"TimeoutRestartedByAScanExpires",
     from(fresh, attempt("Home"), wait(1500ms), scanning(true), wait(1h), look, scanning(false), wait(1999ms),
          look, wait(1ms)),
     "disconnected '' -100, causedBySystem 'Home' @ 3603500 ms", std::nullopt, noResponseFromHome},
    {"ScanBegunBeforeTheAttemptPausesTheTimeout", from(fresh, scanning(true), attempt("Home"), wait(10s)),
     "connectingWifi 'Home' -100"},
    {"EndOfAScanThatDidNotRunDoesNotRestartTheTimeout",
     from(fresh, attempt("Home"), wait(500ms), scanning(false)), "connectingWifi 'Home' -100", 1500ms},
    {"EndOfAScanThatBeganTwiceRestartsTheTimeout",
     from(fresh, attempt("Home"), wait(500ms), scanning(true), scanning(true), scanning(false)),
     "connectingWifi 'Home' -100", 2000ms},
    {"RepeatedEndOfAScanDoesNotRestartTheTimeout",
     from(fresh, attempt("Home"), wait(500ms), scanning(true), scanning(false), wait(500ms), scanning(false)),
     "connectingWifi 'Home' -100", 1500ms},

    {"LinkSetUpStopsTheTimeout", from(fresh, attempt("Home"), wait(1999ms), statusConnecting, wait(1h)),
     "connectingWifi 'Home' -100"},
    {"LinkSetUpStopsTheTimeoutForGood",
     from(fresh, attempt("Home"), wait(1999ms), statusConnecting, wait(1h), scanning(true), scanning(false),
          wait(1h)),
     "connectingWifi 'Home' -100"},
    // Link set-up was seen in the former attempt only.
    {"EveryAttemptRestartsTheTimeout",
     from(fresh, attempt("Home"), statusConnecting, wait(1ns), attempt("Home")),
     "connectingWifi 'Home' -100, causedByUser 'Home' @ 1e-06 ms", 2000ms},
};

INSTANTIATE_TEST_SUITE_P(AttemptTimeOut, Tracker, ::testing::ValuesIn(timeOutCases), nameOf);

class AttemptTimeOut : public TrackerTest {};

TEST_F(AttemptTimeOut, RestOfTheTimeoutIsTruncatedAndNotClamped) {
    struct Row {
        std::chrono::nanoseconds elapsed;
        std::chrono::milliseconds left;
    };
    const std::array rows{
        Row{0ns, 2000ms},
        Row{1ns, 1999ms},
        Row{999'999ns, 1999ms},
        Row{1'000'000ns, 1999ms},
        Row{1'000'001ns, 1998ms},
        Row{1'998'999'999ns, 1ms},
        Row{1'999'000'000ns, 1ms},
        Row{1'999'000'001ns, 0ms},
        Row{2s, 0ms},
        Row{2s + 999'999ns, 0ms},
        Row{2s + 1'000'000ns, -1ms},
        Row{2s + 1'999'999ns, -1ms},
        Row{5s, -3000ms},
        Row{24h, 2000ms - 24h},
    };
    for (const Row& row : rows) {
        happen({attempt("Home"), wait(row.elapsed)});
        EXPECT_EQ(timeLeft(), row.left) << row.elapsed.count() << " ns";
    }
}

TEST_F(AttemptTimeOut, ExpiredTimeoutIsNoticedByEveryOperationThatUpdates) {
    const std::array updates{noBss, statusDisconnected, online(false), look, signal(-40)};
    for (std::size_t i = 0; i < updates.size(); ++i) {
        happen({bss("Old")});  // without a BSS, a signal is ignored
        log.clear();
        happen({attempt("Home"), wait(2s), updates[i]});
        EXPECT_EQ(log.records(), RecordingLog::Records{noResponseFromHome}) << "operation " << i;
    }
}

TEST_F(AttemptTimeOut, ExpiredTimeoutIsNotNoticedByOperationsThatOnlyStore) {
    happen({attempt("Home"), wait(5s), select("Home"), selectNameless, scanning(false), signal(-40)});
    EXPECT_TRUE(log.records().empty());
    happen({attempt("Other")});
    EXPECT_TRUE(log.records().empty()) << "the former attempt was replaced before anybody looked";
    EXPECT_EQ(timeLeft(), 2000ms);
}

TEST_F(AttemptTimeOut, ExpiredTimeoutNamesTheNetworkInRedactableForm) {
    struct Row {
        std::string ssid;
        std::string redactable;
    };
    const std::array rows{
        Row{R"(Cafe "A")", R"(ssid="Cafe \"A\"")"},
        Row{R"(back\slash\)", R"(ssid="back\\slash\\")"},
        Row{std::string("nul\0inside", 10), std::string("ssid=\"nul\0inside\"", 17)},
        Row{"\xff\xfe\x80", "ssid=\"\xff\xfe\x80\""},
        Row{"{}", R"(ssid="{}")"},
        Row{"", R"(ssid="")"},
    };
    for (const Row& row : rows) {
        log.clear();
        happen({attempt(row.ssid), wait(2s), look});
        EXPECT_EQ(log.records(), RecordingLog::Records{noResponseFrom(row.redactable)});
    }
}

}  // namespace
}  // namespace kaz::test
