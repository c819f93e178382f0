// Tasks in front of the platform's loop.
#include "unit/dbus/bus_fixture.h"

#include <atomic>
#include <vector>

namespace kaz::test {
namespace {

class BusTasks : public BusTest {};

TEST_F(BusTasks, AreDroppedWithOneWarningWhileTooManyWait) {
    constexpr int tooMany = 100'000;
    constexpr int limitOfTheQueue = 4096;
    std::atomic<int> ran = 0;
    const Running running = start();
    for (int flood = 1; flood <= 2; ++flood) {
        ran = 0;
        Gate gate;
        bus->pushTask([&] { gate.pass(); });
        gate.waitForTask();
        for (int i = 0; i < tooMany; ++i) {
            bus->pushTask([&ran] { ++ran; });
        }
        gate.open();
        EXPECT_TRUE(eventually([&] { return ran == limitOfTheQueue; }));
        onLoop([] {});
        EXPECT_EQ(ran, limitOfTheQueue);
        EXPECT_EQ(
            log.texts(spdlog::level::warn),
            std::vector<std::string>(static_cast<std::size_t>(flood),
                                     "4096 tasks are waiting, dropping what is added until some have run"));
    }
}

TEST_F(BusTasks, ThatWaitAtTheStopNeverBegin) {
    std::atomic<bool> ran = false;
    Gate gate;
    {
        const Running running = start();
        bus->pushTask([&] { gate.pass(); });
        gate.waitForTask();
        bus->pushTask([&] { ran = true; });
        bus->stop();
        bus->pushTask([&] { ran = true; });
        gate.open();
    }
    EXPECT_FALSE(ran);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(BusTasks, ThatWaitAtTheStopAreDestroyedByIt) {
    Gate gate;
    const Running running = start();
    bus->pushTask([&] { gate.pass(); });
    gate.waitForTask();
    const auto kept = std::make_shared<int>(0);
    bus->pushTask([kept] {});
    bus->stop();
    EXPECT_EQ(kept.use_count(), 1);
    gate.open();
}

TEST_F(BusTasks, ThatThrowAreLoggedAndTheNextOneRuns) {
    const Running running = start();
    bus->pushTask([] { throw std::runtime_error("no luck"); });
    bus->pushTask([] { throw 1; });
    onLoop([] {});
    EXPECT_EQ(log.records(), (RecordingLog::Records{error("Exception from task: no luck"),
                                                    error("Exception of an unknown type from task")}));
}

}  // namespace
}  // namespace kaz::test
