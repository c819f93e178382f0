// A program's own loop follows the Manager through a descriptor.
#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <wifi/client/follower.h>

#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <functional>
#include <future>
#include <optional>
#include <vector>

namespace kaz::test {
namespace {

using wifi::client::Follower;
using wifi::client::Snapshot;
using Status = wifi::ConnectionInfo::Status;

constexpr int atOnce = 0;
const int longEnough = static_cast<int>(std::chrono::milliseconds(timeLimit).count());

bool isReadable(const Follower& follower, int milliseconds) {
    pollfd waited{follower.fd(), POLLIN, 0};
    return ::poll(&waited, 1, milliseconds) == 1;
}

class FollowerTest : public DeviceFixture {
  protected:
    // Takes snapshots until one fulfils the condition.
    static std::vector<Snapshot> takeUntil(Follower& follower,
                                           const std::function<bool(const Snapshot&)>& condition) {
        std::vector<Snapshot> taken;
        while (isReadable(follower, longEnough)) {
            const auto next = follower.take();
            if (!next) {
                ADD_FAILURE() << "readable without a snapshot";
                break;
            }
            taken.push_back(*next);
            if (condition(*next)) {
                break;
            }
        }
        return taken;
    }
};

TEST_F(FollowerTest, FirstSnapshotIsThere) {
    Follower follower;
    ASSERT_TRUE(isReadable(follower, atOnce));
    const auto first = follower.take();
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->enabled);
    EXPECT_FALSE(first->running);
    EXPECT_EQ(first->connection.info.status, Status::disconnected);
    EXPECT_NE(first->time, std::chrono::steady_clock::time_point());
}

TEST_F(FollowerTest, EachStateOfAConnectArrivesInOrder) {
    start();
    Follower follower;
    takeUntil(follower, [](const Snapshot& now) { return now.running; });
    ASSERT_EQ(follower.manager().connect(home()), wifi::ConnectResult::ok);
    const auto states = takeUntil(
        follower, [](const Snapshot& now) { return now.connection.info.status == Status::connected; });
    // The library may publish several stages at once.
    const auto connecting = std::find_if(states.begin(), states.end(), [](const Snapshot& now) {
        return now.connection.info.status == Status::connectingWifi;
    });
    ASSERT_NE(connecting, states.end());
    EXPECT_TRUE(std::is_sorted(connecting, states.end(), [](const Snapshot& a, const Snapshot& b) {
        return a.connection.info.status < b.connection.info.status;
    }));
    EXPECT_TRUE(std::is_sorted(states.begin(), states.end(),
                               [](const Snapshot& a, const Snapshot& b) { return a.time < b.time; }));
}

TEST_F(FollowerTest, SnapshotHasWhatTheGettersReturn) {
    start();
    Follower follower;
    takeUntil(follower, [](const Snapshot& now) { return now.running; });
    follower.manager().scan();
    ASSERT_FALSE(takeUntil(follower, [](const Snapshot& now) { return now.scanning; }).empty());
    takeUntil(follower, [](const Snapshot& now) { return !now.scanning && !now.networks.empty(); });
    ASSERT_EQ(follower.manager().connect(home()), wifi::ConnectResult::ok);
    const auto states = takeUntil(
        follower, [](const Snapshot& now) { return now.connection.info.status == Status::connected; });
    ASSERT_FALSE(states.empty());
    EXPECT_EQ(states.back().connection, follower.manager().connectionDetails());
    // The list without the network in use follows.
    const auto withoutHome = [](const Snapshot& now) {
        return std::none_of(now.networks.begin(), now.networks.end(),
                            [](const auto& network) { return network.ssid == "Home"; });
    };
    if (!withoutHome(states.back())) {
        takeUntil(follower, withoutHome);
    }
    EXPECT_TRUE(withoutHome({{}, true, true, false, follower.manager().networks(), {}}));
}

TEST_F(FollowerTest, SnapshotsTellWhatNetworksAskFor) {
    start();
    Follower follower;
    takeUntil(follower, [](const Snapshot& now) { return now.running; });
    follower.manager().scan();
    const auto states =
        takeUntil(follower, [](const Snapshot& now) { return now.access.contains("Future"); });
    ASSERT_FALSE(states.empty());
    EXPECT_EQ(states.back().access.at("Future").mode, wifi::SecurityMode::sae);
    EXPECT_TRUE(states.back().access.at("Future").demands.sae);
}

TEST_F(FollowerTest, ASnapshotBringsTheAnswerWithWhatFailed) {
    start();
    Follower follower;
    takeUntil(follower, [](const Snapshot& now) { return now.running; });
    follower.manager().forgetNetwork("Nowhere");
    const unsigned first = follower.ask();
    const unsigned second = follower.ask();
    EXPECT_LT(first, second);
    const auto states = takeUntil(follower, [=](const Snapshot& now) { return now.answered == second; });
    wifi::RequestFailures failures;
    for (Snapshot each : states) {
        failures.merge(each.failures);
        if (each.answered < first) {
            EXPECT_TRUE(failures.empty());
        }
    }
    EXPECT_EQ(failures,
              (wifi::RequestFailures{{wifi::RequestFailure::unknownNetwork, wifi::FailureReason::none}}));
}

TEST_F(FollowerTest, NewestTellsWhatFailedBefore) {
    start();
    Follower follower;
    takeUntil(follower, [](const Snapshot& now) { return now.running; });
    follower.manager().forgetNetwork("Nowhere");
    follower.ask();
    const unsigned last = follower.ask();
    std::optional<Snapshot> newest;
    wifi::RequestFailures failures;
    ASSERT_TRUE(eventually([&] {
        newest = follower.takeNewest();
        if (newest) {
            failures.merge(newest->failures);
        }
        return newest && newest->answered == last;
    }));
    EXPECT_EQ(failures,
              (wifi::RequestFailures{{wifi::RequestFailure::unknownNetwork, wifi::FailureReason::none}}));
}

TEST_F(FollowerTest, DescriptorIsReadableOnlyWhileASnapshotWaits) {
    start();
    Follower follower;
    takeUntil(follower, [](const Snapshot& now) { return now.running; });
    // The Manager ends, so that nothing more can arrive.
    follower.close();
    while (isReadable(follower, atOnce)) {
        ASSERT_TRUE(follower.take());
    }
    EXPECT_FALSE(follower.take());
    EXPECT_FALSE(follower.takeNewest());
}

TEST_F(FollowerTest, NewestTakesThePlaceOfAll) {
    start();
    Follower follower;
    takeUntil(follower, [](const Snapshot& now) { return now.running; });
    follower.manager().setEnabled(false);
    ASSERT_TRUE(eventually([&] { return !follower.manager().isWifiStackInitialized(); }));
    follower.close();
    const auto newest = follower.takeNewest();
    ASSERT_TRUE(newest);
    EXPECT_FALSE(newest->enabled);
    EXPECT_FALSE(newest->running);
    EXPECT_FALSE(isReadable(follower, atOnce));
}

TEST_F(FollowerTest, OldestMakeRoomWhenNobodyTakes) {
    start();
    Follower follower;
    takeUntil(follower, [](const Snapshot& now) { return now.running; });
    follower.manager().forgetNetwork("Nowhere");
    follower.ask();
    std::promise<void> answered;
    follower.manager().whenCarriedOut([&](const auto&) { answered.set_value(); });
    ASSERT_EQ(answered.get_future().wait_for(timeLimit), std::future_status::ready);
    // Each choice is a callback.
    for (std::size_t i = 0; i < Follower::limit / 2 + 1; ++i) {
        follower.manager().setEnabled(false);
        follower.manager().setEnabled(true);
    }
    ASSERT_TRUE(eventually([&] { return follower.manager().isWifiStackInitialized(); }));
    follower.manager().setEnabled(false);
    ASSERT_TRUE(eventually([&] { return !follower.manager().isWifiStackInitialized(); }));
    follower.close();
    std::vector<Snapshot> taken;
    while (const auto next = follower.take()) {
        taken.push_back(*next);
    }
    EXPECT_EQ(taken.size(), Follower::limit);
    EXPECT_EQ(taken.front().failures,
              (wifi::RequestFailures{{wifi::RequestFailure::unknownNetwork, wifi::FailureReason::none}}))
        << "is never lost";
    EXPECT_FALSE(taken.back().enabled);
}

}  // namespace
}  // namespace kaz::test
