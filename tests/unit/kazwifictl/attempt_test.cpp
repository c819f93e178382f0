#include "kazwifictl/commands/attempt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace kaz::ctl {
namespace {

using std::chrono::milliseconds;
using wifi::ConnectionInfo;
using Status = ConnectionInfo::Status;
using Outcome = Attempt::Outcome;

Clock::time_point at(int ms) {
    return Clock::time_point(std::chrono::hours(1)) + milliseconds(ms);
}

// A change, and when it is seen: in ms after the request.
struct Event {
    int ms;
    std::function<void(Snapshot&)> change;
};

Event connection(int ms, Status status, const std::string& ssid = "Home", int signal = wifi::NoSignaldBm) {
    return {ms, [=](Snapshot& now) {
                now.connection.info = {};
                now.connection.info.status = status;
                now.connection.info.ssid = ssid;
                now.connection.info.signal = signal;
            }};
}

Event connecting(int ms) {
    return connection(ms, Status::connectingWifi);
}

Event disconnected(int ms) {
    return {ms, [](Snapshot& now) {
                now.connection.info = {};
                now.connection.info.disconnectSsid = "Home";
                now.connection.info.disconnectReason = ConnectionInfo::DisconnectReason::causedBySystem;
                now.connection.lastOutcome.ssid = "Home";
                now.connection.lastOutcome.cause = wifi::Cause::wrongKey;
            }};
}

Event scanning(int ms, bool on) {
    return {ms, [on](Snapshot& now) { now.scanning = on; }};
}

class AttemptTest : public testing::Test {
  protected:
    AttemptTest() { state.running = true; }

    void see(const std::vector<Event>& events) {
        for (const auto& [ms, change] : events) {
            Snapshot now = state;
            change(now);
            now.time = at(ms);
            attempt.see(state, now);
            state = now;
        }
    }

    Attempt attempt{"Home", at(0)};
    Snapshot state;
};

TEST_F(AttemptTest, TimesEveryStageUpToTheAddress) {
    see({connecting(5)});
    EXPECT_EQ(attempt.current(), Stage::Kind::join);
    see({scanning(20, true)});
    EXPECT_EQ(attempt.current(), Stage::Kind::search);
    see({scanning(2520, false), connection(2820, Status::connectingIP, "Home", -48)});
    EXPECT_EQ(attempt.current(), Stage::Kind::address);
    EXPECT_FALSE(attempt.outcome());
    see({connection(4320, Status::connected, "Home", -48)});
    EXPECT_EQ(attempt.outcome(), Outcome::connected);
    EXPECT_EQ(attempt.current(), std::nullopt);
    std::vector<std::pair<Stage::Kind, Clock::duration>> stages;
    for (const Stage& stage : attempt.stages()) {
        stages.emplace_back(stage.kind, stage.took);
    }
    EXPECT_THAT(stages, testing::ElementsAre(std::pair(Stage::Kind::search, milliseconds(2500)),
                                             std::pair(Stage::Kind::join, milliseconds(300)),
                                             std::pair(Stage::Kind::address, milliseconds(1500))));
    EXPECT_EQ(attempt.signal(), -48);
    EXPECT_EQ(attempt.total(), milliseconds(4320));
}

TEST_F(AttemptTest, IgnoresWhatWasBeforeTheLibraryTookItUp) {
    see({connection(1, Status::connected, "Office", -50), disconnected(2),
         connection(3, Status::connected, "Home", -50)});
    EXPECT_FALSE(attempt.begun());
    EXPECT_FALSE(attempt.outcome());
    see({connecting(4)});
    EXPECT_TRUE(attempt.begun());
}

struct End {
    std::string name;
    Outcome outcome;
    std::size_t stages;
    std::vector<Event> events;
};

void PrintTo(const End& end, std::ostream* out) {
    *out << end.name;
}

class AttemptEnd : public AttemptTest, public testing::WithParamInterface<End> {};

TEST_P(AttemptEnd, FollowsFromWhatIsSeen) {
    const End& end = GetParam();
    see(end.events);
    EXPECT_EQ(attempt.outcome(), end.outcome);
    EXPECT_EQ(attempt.stages().size(), end.stages);
    EXPECT_EQ(attempt.linkIsUp(), end.outcome == Outcome::connected || end.outcome == Outcome::lost);
    EXPECT_EQ(attempt.otherSsid(), end.outcome == Outcome::other ? "Office" : "");
    const bool explained = end.outcome == Outcome::failed || end.outcome == Outcome::lost;
    EXPECT_EQ(attempt.failure().cause, explained ? wifi::Cause::wrongKey : wifi::Cause::none);
}

Event stopped(int ms) {
    return {ms, [](Snapshot& now) { now.running = false; }};
}

const std::vector<End> ends{
    {"OnlineAtOnceIsConnected", Outcome::connected, 2, {connecting(0), connection(300, Status::connected)}},
    {"EndBeforeTheLinkIsAFailure", Outcome::failed, 0, {connecting(3), disconnected(2010)}},
    {"EndAfterScansIsAFailure",
     Outcome::failed,
     2,
     {connecting(0), scanning(10, true), scanning(2500, false), scanning(3000, true), scanning(5500, false),
      disconnected(7510)}},
    {"EndDuringAScanIsAFailure",
     Outcome::failed,
     0,
     {connecting(0), scanning(1500, true), disconnected(2010)}},
    {"LinkThatBreaksBeforeTheAddressIsLost",
     Outcome::lost,
     1,
     {connecting(0), connection(300, Status::connectingIP), disconnected(900)}},
    {"DeviceThatGoesElsewhereEndsIt",
     Outcome::other,
     0,
     {connecting(0), connection(700, Status::connectingIP, "Office")}},
    {"SupplicantThatStopsEndsIt", Outcome::stopped, 0, {connecting(0), stopped(100)}},
    {"StatusMayRepeatAndGoBack",
     Outcome::connected,
     3,
     {connecting(0), connection(10, Status::connectingWifi, "Home", -50),
      connection(300, Status::connectingIP, "Home", -50), connection(310, Status::connectingIP, "Home", -51),
      connection(320, Status::connectingWifi, "Home", -51),
      connection(400, Status::connectingIP, "Home", -51), connection(500, Status::connected, "Home", -52)}},
    {"ScansBeforeTheAttemptAndAfterTheLinkAreNoStages",
     Outcome::connected,
     2,
     {scanning(1, true), scanning(2, false), connecting(3), connection(300, Status::connectingIP),
      scanning(400, true), scanning(500, false), connection(900, Status::connected)}},
    {"NothingChangesAfterTheEnd",
     Outcome::connected,
     2,
     {connecting(0), connection(300, Status::connected, "Home", -50), disconnected(400)}},
};

INSTANTIATE_TEST_SUITE_P(Any, AttemptEnd, testing::ValuesIn(ends),
                         [](const auto& which) { return which.param.name; });

}  // namespace
}  // namespace kaz::ctl
