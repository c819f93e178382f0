#include <stdlib.h>

#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

class EventLoopWithoutABus : public LoopTest {
  protected:
    // What a loop does without a bus; and that it does not spin.
    void expectTheLoopToGoOn() {
        Counter expiries;
        Counter passes;
        onLoop([&] {
            loop->setTimerCompletedTask([&] { ++expiries; });
            loop->configureTimerSync(true, milliseconds(5));
            countIdlePasses(passes);
        });
        EXPECT_TRUE(expiries.reaches(3));
        EXPECT_TRUE(passes.reaches(3));
        onLoop([this] {
            EXPECT_EQ(loop->getSdBusHandle(), nullptr);
            loop->configureTimerSync(false, milliseconds(0));
            loop->setTimerCompletedTask({});
            loop->setIdleTaskSync({});
        });
        log.clear();
        EXPECT_FALSE(callFromLoop("Echo"));
        registerForChanged(true, [](dbus::MessageDecoder&) {});
        registerForChanged(false, [](dbus::MessageDecoder&) {});
        onLoop([this] { loop->removeTemporarySignalHandlersSync(); });
        EXPECT_TRUE(log.records().empty());
        EXPECT_TRUE(fallsAsleep(loopThread()));
    }
};

TEST_F(EventLoopWithoutABus, AtTheStartLogsOneErrorAndGoesOn) {
    const std::vector<std::string> addresses{
        "unix:path=/nonexistent/socket",
        "unix:path=/dev/null",
        "nonsense",
        "unix:path=/nonexistent/a;unix:path=/nonexistent/b",
    };
    for (const std::string& address : addresses) {
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
        log.clear();
        loop = std::make_unique<dbus::EventLoop>();
        const Running running = start();
        onLoop([] {});
        EXPECT_EQ(log.records().size(), 1U) << address;
        ASSERT_EQ(log.texts(spdlog::level::err).size(), 1U) << address;
        EXPECT_EQ(log.texts(spdlog::level::err)[0].find("Cannot connect to the system bus: "), 0U) << address;
        expectTheLoopToGoOn();
    }
}

TEST_F(EventLoopWithoutABus, FindsTheSecondOfTwoAddresses) {
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=/nonexistent/socket;" + bus.address()).c_str(), 1);
    const Running running = start();
    EXPECT_TRUE(onLoop([this] { return loop->getSdBusHandle() != nullptr; }));
    EXPECT_TRUE(log.records().empty());
}

TEST_F(EventLoopWithoutABus, KilledWhileItSleepsLogsOneErrorAndGoesOn) {
    const Running running = start();
    registerForChanged(false, [](dbus::MessageDecoder&) {});
    registerForChanged(true, [](dbus::MessageDecoder&) {});
    ASSERT_TRUE(fallsAsleep(loopThread()));
    bus.kill();
    ASSERT_TRUE(log.waitForText(spdlog::level::err, "Lost the connection to the system bus"));
    onLoop([] {});
    EXPECT_EQ(log.records().size(), 1U);
    expectTheLoopToGoOn();
}

TEST_F(EventLoopWithoutABus, KilledDuringACallFailsTheCallLogsOneErrorAndGoesOn) {
    auto peer = std::make_unique<BusPeer>(peerName);
    const Running running = start();
    std::thread killer([&] {
        EXPECT_TRUE(peer->waitForCall("Ignore()"));
        bus.kill();
    });
    EXPECT_FALSE(callFromLoop("Ignore"));
    killer.join();
    onLoop([] {});
    EXPECT_EQ(log.texts(spdlog::level::err),
              (std::vector<std::string>{"Lost the connection to the system bus"}));
    EXPECT_EQ(log.texts(spdlog::level::warn).size(), 1U);
    expectTheLoopToGoOn();
}

TEST_F(EventLoopWithoutABus, KilledDuringATaskLeavesTheTaskItsHandle) {
    const Running running = start();
    onLoop([this] {
        sd_bus* before = loop->getSdBusHandle();
        bus.kill();
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(callPeer("Echo"), nullptr);
        }
        EXPECT_EQ(loop->getSdBusHandle(), before);
    });
    EXPECT_TRUE(log.waitForText(spdlog::level::err, "Lost the connection to the system bus"));
    EXPECT_EQ(log.texts(spdlog::level::err).size(), 1U);
    expectTheLoopToGoOn();
}

TEST_F(EventLoopWithoutABus, KilledInTheIdlePassIsNoticedWithoutAnotherEvent) {
    loop->setIdleTaskSync([this, killed = false]() mutable -> std::optional<milliseconds> {
        if (!std::exchange(killed, true)) {
            bus.kill();
        }
        return std::nullopt;
    });
    const Running running = start();
    EXPECT_TRUE(log.waitForText(spdlog::level::err, "Lost the connection to the system bus"));
}

}  // namespace
}  // namespace kaz::test
