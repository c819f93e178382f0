#include <atomic>
#include <thread>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

// One source is always ready, and the others must still get their turns.
class EventLoopFairness : public LoopTest {
  protected:
    void SetUp() override {
        countIdlePasses(idlePasses);
        loop->setTimerCompletedTask([this] { ++expiries; });
    }

    // A task that pushes itself again, for ever.
    void floodWithTasks() {
        loop->pushTaskAsync([this] {
            ++tasks;
            floodWithTasks();
        });
    }

    Counter tasks;
    Counter handled;
    Counter idlePasses;
    Counter expiries;
};

TEST_F(EventLoopFairness, EndlessTasksDoNotHoldBackSignals) {
    BusPeer peer{peerName};
    const Running running = start();
    registerForChanged(false, [this](dbus::MessageDecoder&) { ++handled; });
    floodWithTasks();
    ASSERT_TRUE(tasks.reaches(100));
    for (std::size_t i = 1; i <= 20; ++i) {
        peer.emit(changed, "");
        ASSERT_TRUE(handled.reaches(i));
    }
}

TEST_F(EventLoopFairness, EndlessTasksDoNotHoldBackTheTimer) {
    const Running running = start();
    floodWithTasks();
    onLoop([this] { loop->configureTimerSync(true, milliseconds(5)); });
    EXPECT_TRUE(expiries.reaches(10));
}

TEST_F(EventLoopFairness, EndlessTasksDoNotHoldBackTheIdleTask) {
    const Running running = start();
    floodWithTasks();
    ASSERT_TRUE(tasks.reaches(100));
    const auto before = idlePasses.value();
    EXPECT_TRUE(idlePasses.reaches(before + 3));
}

TEST_F(EventLoopFairness, EndlessTasksDoNotHoldBackTheStop) {
    const Running running = start();
    floodWithTasks();
    ASSERT_TRUE(tasks.reaches(100));
    end();
}

// A peer that keeps at least a hundred signals waiting for the loop.
class EventLoopInASignalStorm : public EventLoopFairness {
  protected:
    void SetUp() override {
        EventLoopFairness::SetUp();
        loop->startEventLoopAsync();
        registerForChanged(false, [this](dbus::MessageDecoder&) {
            ++handled;
            std::this_thread::sleep_for(milliseconds(1));
        });
        storm_ = std::thread([this] { rage(); });
        EXPECT_TRUE(handled.reaches(1));
    }

    void TearDown() override {
        calm_ = true;
        storm_.join();
        end();
        EXPECT_GE(lowest_, 100U) << "the storm was to be without a pause";
    }

    BusPeer peer{peerName};

  private:
    // What the loop handles in some seconds, so that it has enough when this thread must wait for a processor.
    static constexpr std::size_t mostWaiting = 4000;

    void rage() {
        std::size_t sent = 0;
        while (sent < mostWaiting) {
            peer.emit(changed, "");
            ++sent;
        }
        while (!calm_) {
            const std::size_t waiting = sent - handled.value();
            lowest_ = std::min(lowest_, waiting);
            if (waiting < mostWaiting) {
                peer.emit(changed, "");
                ++sent;
            } else {
                std::this_thread::yield();
            }
        }
    }

    std::atomic<bool> calm_ = false;
    std::size_t lowest_ = SIZE_MAX;
    std::thread storm_;
};

TEST_F(EventLoopInASignalStorm, RunsTasks) {
    for (int i = 0; i < 20; ++i) {
        std::promise<std::size_t> between;
        loop->pushTaskAsync([&] {
            loop->pushTaskAsync(
                [&, before = handled.value()] { between.set_value(handled.value() - before); });
        });
        EXPECT_LT(between.get_future().get(), 500U);  // in turn with tasks, the loop handles a few signals
    }
}

TEST_F(EventLoopInASignalStorm, RunsTheIdleTask) {
    const auto before = idlePasses.value();
    EXPECT_TRUE(idlePasses.reaches(before + 3));
}

TEST_F(EventLoopInASignalStorm, RunsTheTimer) {
    onLoop([this] { loop->configureTimerSync(true, milliseconds(10)); });
    EXPECT_TRUE(expiries.reaches(5));
}

// A call reads ahead what arrives before its reply.
TEST_F(EventLoopInASignalStorm, RunsTheTimerBetweenMessagesThatACallReadAhead) {
    std::size_t before = 0;
    std::atomic<std::size_t> between = 0;
    loop->setTimerCompletedTask([&] {
        between = handled.value() - before;
        ++expiries;
    });
    onLoop([&] {
        callPeer("Echo", "x");
        before = handled.value();
        loop->configureTimerSync(true, milliseconds(10));
    });
    EXPECT_TRUE(expiries.reaches(1));
    onLoop([&] { loop->configureTimerSync(false, milliseconds(10)); });
    EXPECT_LT(between, 500U);  // a few signals of 1 ms each
}

}  // namespace
}  // namespace kaz::test
