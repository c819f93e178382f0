#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

using Status = wifi::ConnectionInfo::Status;

using LifeCycle = DeviceFixture;

TEST_F(LifeCycle, SwitchingOffAndOnStopsAndStartsTheSupplicant) {
    start();
    manager().setEnabled(false);
    ASSERT_TRUE(user().waitForStack(false));
    EXPECT_FALSE(manager().isEnabled());
    EXPECT_EQ(device().unitState(), "inactive");
    ASSERT_TRUE(user().waitUntil([&] { return manager().networks().empty(); }));

    manager().setEnabled(true);
    ASSERT_TRUE(user().waitForStack(true));
    EXPECT_TRUE(manager().isEnabled());
}

TEST_F(LifeCycle, TheOnOffChoiceSurvivesTheManager) {
    start();
    manager().setEnabled(false);
    ASSERT_TRUE(user().waitForStack(false));
    user().leave();
    WifiUser next;
    EXPECT_FALSE(next.manager().isEnabled());
}

TEST_F(LifeCycle, ASupplicantThatCrashedIsFollowedOnceItIsStartedAgain) {
    start();
    ASSERT_NO_FATAL_FAILURE(connect(home()));
    ASSERT_TRUE(waitForSaved("ssid=\"Home\""));

    device().crashSupplicant();
    ASSERT_TRUE(user().waitForStack(false));
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));

    manager().setEnabled(true);
    ASSERT_TRUE(user().waitForStack(true));
    // The supplicant connects to its saved network by itself, and the library follows.
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
}

// systemd reports only transitional states of the unit. But the supplicant removes its interface when it ends.
TEST_F(LifeCycle, ASupplicantThatIsRestartedIsFollowed) {
    start();
    ASSERT_NO_FATAL_FAILURE(connect(home()));
    ASSERT_TRUE(waitForSaved("priority=2"));
    user().forgetHistory();
    const int before = user().enabledCallbacks();
    device().restartSupplicant();
    ASSERT_TRUE(user().waitUntil([&] { return user().enabledCallbacks() >= before + 2; }));
    ASSERT_TRUE(user().waitForStack(true));
    ASSERT_TRUE(user().waitUntil([&] {
        const auto history = user().history();
        const auto lost = std::find_if(history.begin(), history.end(),
                                       [](const auto& info) { return info.status != Status::connected; });
        return std::any_of(lost, history.end(), [](const auto& info) {
            return info.status == Status::connected && info.ssid == "Home";
        });
    }));
    ASSERT_NO_FATAL_FAILURE(connect(cafe()));
}

TEST_F(LifeCycle, ABusThatGoesAwayIsUsedAgainOnceItIsBack) {
    start();
    ASSERT_NO_FATAL_FAILURE(connect(home()));
    ASSERT_TRUE(waitForSaved("ssid=\"Home\""));
    const int before = user().enabledCallbacks();

    crashBus();
    ASSERT_TRUE(user().waitForStack(false));
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    ASSERT_TRUE(user().waitUntil([&] { return manager().networks().empty(); }));
    EXPECT_TRUE(manager().isEnabled());
    manager().scan();  // nobody hears it

    restartBus();
    ASSERT_TRUE(user().waitForStack(true));
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
    ASSERT_NO_FATAL_FAILURE(connect(cafe()));
    EXPECT_EQ(user().enabledCallbacks(), before + 2);
}

TEST_F(LifeCycle, ABusThatComesLateIsUsed) {
    crashBus();
    WifiUser early;
    EXPECT_FALSE(early.manager().isWifiStackInitialized());
    restartBus();
    ASSERT_TRUE(early.waitForStack(true));
    early.manager().scan();
    EXPECT_TRUE(early.waitForNetwork("Home"));
}

TEST_F(LifeCycle, ALaterManagerFindsTheConnection) {
    start();
    ASSERT_NO_FATAL_FAILURE(connect(home()));
    restartUser();
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
}

// A call times out after ten seconds. On a busy machine one destruction may have to wait for a processor.
TEST_F(LifeCycle, DestroyingAManagerTakesAboutASecondWhenThePeerNeverAnswers) {
    start();
    const auto ordered =
        device().orderFault({.peer = "supplicant", .member = "Scan", .kind = sim::FaultKind::noReply});
    const auto leave = [this] {
        device().forgetCalls();
        manager().scan();
        EXPECT_TRUE(device().waitForCalls(
            [](const auto& calls) { return !calls.empty() && calls.back().member == "Scan"; }, timeLimit));
        const auto before = std::chrono::steady_clock::now();
        user().leave();
        return std::chrono::steady_clock::now() - before;
    };
    unsigned ends = 1;
    for (; leave() >= std::chrono::seconds(3); ++ends) {
        ASSERT_LT(ends, 3U);
        restartUser();
    }
    EXPECT_EQ(device().timesFired(ordered), ends);
}

TEST_F(LifeCycle, RequestsThatHaveNotBegunReachNoServiceAfterTheEnd) {
    start();
    ASSERT_NO_FATAL_FAILURE(connect(home()));
    ASSERT_TRUE(waitForSaved("priority=2"));
    device().orderFault({.peer = "supplicant", .member = "Scan", .kind = sim::FaultKind::noReply});
    device().forgetCalls();
    manager().scan();
    ASSERT_TRUE(waitForCall("Scan"));
    ASSERT_EQ(manager().connect(cafe()), wifi::ConnectResult::ok);
    manager().connectConfigured("Home");
    manager().forgetNetwork("Home");
    manager().disconnect();
    manager().scan();
    manager().setEnabled(false);
    user().leave();
    std::vector<std::string> called;
    for (const sim::Call& call : device().calls()) {
        called.push_back(call.peer + ' ' + call.member);
    }
    EXPECT_EQ(called, std::vector<std::string>{"supplicant Scan"});
    EXPECT_EQ(device().unitState(), "active");
}

TEST_F(LifeCycle, AStormOfSignalsLosesNothing) {
    constexpr unsigned signals = 20'000;
    start();
    forgetLog();
    device().storm(signals);
    manager().scan();
    ASSERT_TRUE(user().waitForNetwork("Home"));
    const auto allAreHandled = [seen = std::size_t{0}, handled = 0U](const auto& records) mutable {
        for (; seen < records.size(); ++seen) {
            handled += records[seen].text.starts_with("PropertiesChanged: State=") ? 1U : 0U;
        }
        return handled >= signals;
    };
    EXPECT_TRUE(log().waitFor(allAreHandled));
    ASSERT_NO_FATAL_FAILURE(connect(home()));
}

}  // namespace
}  // namespace kaz::test
