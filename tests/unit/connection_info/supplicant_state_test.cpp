// The supplicant starts and stops.
#include "unit/connection_info/tracker_fixture.h"

namespace kaz::test {
namespace {

const std::vector<TrackerCase> stopCases{
    {"StoppedSupplicantLeavesANewRecordWithoutASignal", from(connected, attempt("Cafe"), supplicantStops),
     "disconnected '' -100"},
    {"StoppedSupplicantEndsTheAttemptWithoutALog", from(fresh, attempt("Home"), supplicantStops, wait(10s)),
     "disconnected '' -100"},
    {"StoppedSupplicantClearsTheBss", from(connected, supplicantStops, statusConnected, signal(-30)),
     "disconnected '' -100"},
    {"StoppedSupplicantCountsAsADisabledInterface", from(connected, supplicantStops, bss("Home")),
     "disconnected '' -100"},
    // This report has the time of the stop. An attempt of the same time counts it, but ends only by its timeout, because
    // no link set-up was seen.
    {"AttemptAtTheTimeOfTheStopIsPublished",
     from(connected, supplicantStops, bss("Home"), look, attempt("Home")), "connectingWifi 'Home' -50",
     2000ms},
    {"AttemptAtTheTimeOfTheStopEndsByItsTimeout",
     from(connected, supplicantStops, bss("Home"), look, attempt("Home"), look, wait(2s)),
     "disconnected '' -100, causedBySystem 'Home' @ 3000 ms", std::nullopt,
     warning(R"(No response from wpa_supplicant, assuming we are disconnected from ssid="Home")")},
    {"StoppedSupplicantEndsTheScan", from(fresh, scanning(true), supplicantStops, attempt("Home")),
     "connectingWifi 'Home' -100", 2000ms},
    {"ScanAfterAStopIsAChange", from(fresh, scanning(true), supplicantStops, attempt("Home"), scanning(true)),
     "connectingWifi 'Home' -100"},
    {"StoppedSupplicantKeepsNetworkdsState", from(connected, supplicantStops, bss("Home"), statusConnected),
     "connected 'Home' -50"},
};

const std::vector<TrackerCase> startCases{
    {"StartedSupplicantLeavesANewRecordWithSignalZero", from(fresh, supplicantStops, supplicantStarts),
     "disconnected '' 0"},
    {"StartedSupplicantClearsTheDisconnectRecord",
     from(connected, disconnect, statusDisconnected, supplicantStarts), "disconnected '' 0"},
    {"StartedSupplicantKeepsTheFactsOfTheConnection", from(connected, supplicantStarts),
     "connected 'Home' -50"},
    {"StartedSupplicantKeepsTheAttempt", from(fresh, attempt("Home"), wait(500ms), supplicantStarts),
     "disconnected '' 0", 1500ms},
    {"AttemptKeptByAStartedSupplicantSucceeds",
     from(fresh, attempt("Home"), wait(500ms), supplicantStarts, look, bss("Home"), statusConnected),
     "connectingIP 'Home' -50"},
    {"StartedSupplicantKeepsTheScan", from(fresh, scanning(true), supplicantStarts, attempt("Home")),
     "connectingWifi 'Home' -100"},
};

INSTANTIATE_TEST_SUITE_P(SupplicantStopped, Tracker, ::testing::ValuesIn(stopCases), nameOf);
INSTANTIATE_TEST_SUITE_P(SupplicantStarted, Tracker, ::testing::ValuesIn(startCases), nameOf);

class SupplicantStarted : public TrackerTest {};

TEST_F(SupplicantStarted, RecordIsNew) {
    happen({supplicantStops, supplicantStarts});
    EXPECT_EQ(tracker.getConnectionInfo(), ConnectionInfo());
}

}  // namespace
}  // namespace kaz::test
