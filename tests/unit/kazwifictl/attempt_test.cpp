#include "kazwifictl/commands/attempt.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace kaz::ctl {
namespace {

using std::chrono::milliseconds;
using wifi::ConnectionInfo;
using Status = ConnectionInfo::Status;
using Outcome = Attempt::Outcome;

// Passes changes to an Attempt, at times relative to the request.
class AttemptTest : public testing::Test {
  protected:
    static Clock::time_point at(int ms) {
        return Clock::time_point(std::chrono::hours(1)) + milliseconds(ms);
    }

    void connection(int ms, Status status, const std::string& ssid, int signal = wifi::NoSignaldBm) {
        Snapshot now = state;
        now.connection = {};
        now.connection.status = status;
        now.connection.ssid = ssid;
        now.connection.signal = signal;
        see(ms, now);
    }
    void disconnected(int ms, int noticed) {
        Snapshot now = state;
        now.connection = {};
        now.connection.disconnectSsid = "Home";
        now.connection.disconnectReason = ConnectionInfo::DisconnectReason::causedBySystem;
        now.connection.disconnectTime = at(noticed);
        see(ms, now);
    }
    void scanning(int ms, bool on) {
        Snapshot now = state;
        now.scanning = on;
        see(ms, now);
    }
    void see(int ms, Snapshot now) {
        now.time = at(ms);
        attempt.see(state, now);
        state = now;
    }

    std::vector<std::pair<Stage::Kind, milliseconds>> stages() const {
        std::vector<std::pair<Stage::Kind, milliseconds>> result;
        for (const Stage& stage : attempt.stages()) {
            result.emplace_back(stage.kind, std::chrono::duration_cast<milliseconds>(stage.took));
        }
        return result;
    }

    Attempt attempt{"Home", at(0)};
    Snapshot state = [] {
        Snapshot begin;
        begin.running = true;
        return begin;
    }();
};

TEST_F(AttemptTest, TimesEveryStageUpToTheAddress) {
    connection(5, Status::connectingWifi, "Home");
    EXPECT_EQ(attempt.current(), Stage::Kind::join);
    scanning(20, true);
    EXPECT_EQ(attempt.current(), Stage::Kind::search);
    scanning(2520, false);
    connection(2820, Status::connectingIP, "Home", -48);
    EXPECT_EQ(attempt.current(), Stage::Kind::address);
    EXPECT_FALSE(attempt.outcome());
    connection(4320, Status::connected, "Home", -48);
    EXPECT_EQ(attempt.outcome(), Outcome::connected);
    EXPECT_EQ(attempt.current(), std::nullopt);
    EXPECT_EQ(stages(), (std::vector<std::pair<Stage::Kind, milliseconds>>{
                            {Stage::Kind::search, milliseconds(2500)},
                            {Stage::Kind::join, milliseconds(300)},
                            {Stage::Kind::address, milliseconds(1500)}}));
    EXPECT_EQ(attempt.signal(), -48);
    EXPECT_EQ(attempt.total(), milliseconds(4320));
}

TEST_F(AttemptTest, TakesAConnectionThatIsOnlineAtOnceAsConnected) {
    connection(0, Status::connectingWifi, "Home");
    connection(300, Status::connected, "Home", -50);
    EXPECT_EQ(attempt.outcome(), Outcome::connected);
    EXPECT_EQ(stages().size(), 2U);
}

TEST_F(AttemptTest, IgnoresWhatWasBeforeTheLibraryTookItUp) {
    connection(1, Status::connected, "Office", -50);
    disconnected(2, 2);
    connection(3, Status::connected, "Home", -50);
    EXPECT_FALSE(attempt.begun());
    EXPECT_FALSE(attempt.outcome());
    connection(4, Status::connectingWifi, "Home");
    EXPECT_TRUE(attempt.begun());
}

TEST_F(AttemptTest, TakesSilenceForNoAnswer) {
    connection(3, Status::connectingWifi, "Home");
    disconnected(2010, 2005);
    EXPECT_EQ(attempt.outcome(), Outcome::notAnswering);
}

TEST_F(AttemptTest, CountsTheSilenceFromTheEndOfTheLastScan) {
    connection(0, Status::connectingWifi, "Home");
    scanning(10, true);
    scanning(2500, false);
    scanning(3000, true);
    scanning(5500, false);
    disconnected(7510, 7505);
    EXPECT_EQ(attempt.outcome(), Outcome::notAnswering);
}

TEST_F(AttemptTest, TakesAnyOtherEndForARefusal) {
    for (const int ms : {10, 1900, 2400, 4500}) {
        attempt = Attempt("Home", at(0));
        state.connection = {};
        connection(0, Status::connectingWifi, "Home");
        disconnected(ms + 1, ms);
        EXPECT_EQ(attempt.outcome(), Outcome::refused) << "after " << ms << " ms";
    }
}

TEST_F(AttemptTest, TakesAnEndDuringAScanForARefusal) {
    connection(0, Status::connectingWifi, "Home");
    scanning(1500, true);
    disconnected(2010, 2005);
    EXPECT_EQ(attempt.outcome(), Outcome::refused);
}

TEST_F(AttemptTest, IsLostWhenTheLinkBreaksBeforeTheAddress) {
    connection(0, Status::connectingWifi, "Home");
    connection(300, Status::connectingIP, "Home");
    EXPECT_TRUE(attempt.linkIsUp());
    disconnected(900, 900);
    EXPECT_EQ(attempt.outcome(), Outcome::lost);
}

TEST_F(AttemptTest, EndsWhenTheDeviceGoesElsewhere) {
    connection(0, Status::connectingWifi, "Home");
    connection(700, Status::connectingIP, "Office");
    EXPECT_EQ(attempt.outcome(), Outcome::other);
    EXPECT_EQ(attempt.otherSsid(), "Office");
}

TEST_F(AttemptTest, EndsWhenTheSupplicantGoesAway) {
    connection(0, Status::connectingWifi, "Home");
    Snapshot now = state;
    now.running = false;
    see(100, now);
    EXPECT_EQ(attempt.outcome(), Outcome::stopped);
}

TEST_F(AttemptTest, ToleratesStatusesThatRepeatAndGoBack) {
    connection(0, Status::connectingWifi, "Home");
    connection(10, Status::connectingWifi, "Home", -50);
    connection(300, Status::connectingIP, "Home", -50);
    connection(310, Status::connectingIP, "Home", -51);
    connection(320, Status::connectingWifi, "Home", -51);
    connection(400, Status::connectingIP, "Home", -51);
    connection(500, Status::connected, "Home", -52);
    EXPECT_EQ(attempt.outcome(), Outcome::connected);
    EXPECT_EQ(stages().size(), 3U);
}

TEST_F(AttemptTest, DoesNotChangeItsMindAfterTheEnd) {
    connection(0, Status::connectingWifi, "Home");
    connection(300, Status::connected, "Home", -50);
    disconnected(400, 400);
    EXPECT_EQ(attempt.outcome(), Outcome::connected);
}

}  // namespace
}  // namespace kaz::ctl
