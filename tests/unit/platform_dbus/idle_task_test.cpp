#include <atomic>
#include <stdexcept>
#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

using Answer = std::optional<milliseconds>;

class EventLoopIdleTask : public LoopTest {
  protected:
    Counter passes;
};

TEST_F(EventLoopIdleTask, RunsOnceTheLoopHasNothingElseToDo) {
    countIdlePasses(passes);
    const Running running = start();
    EXPECT_TRUE(passes.reaches(1));
}

TEST_F(EventLoopIdleTask, RunsOnlyWhenNothingElseIsReady) {
    std::string order;
    loop->setIdleTaskSync([&]() -> Answer {
        order += 'i';
        return std::nullopt;
    });
    const Running running = start();
    // A machine that is busy elsewhere may make the pass overdue, so one clean round counts.
    EXPECT_TRUE(eventually([&] {
        onLoop([&] {
            order.clear();
            for (const char name : {'a', 'b', 'c', 'd'}) {
                loop->pushTaskAsync([&order, name] { order += name; });
            }
        });
        return eventually([&] { return onLoop([&] { return order.ends_with('i'); }); }) &&
               onLoop([&] { return order.starts_with("abcdi"); });
    }));
}

TEST_F(EventLoopIdleTask, WithoutADelayLetsTheLoopSleepUntilSomethingHappens) {
    countIdlePasses(passes);
    const Running running = start();
    const pid_t thread = loopThread();
    ASSERT_TRUE(fallsAsleep(thread));
    const auto before = passes.value();
    ASSERT_TRUE(fallsAsleep(thread));
    EXPECT_EQ(passes.value(), before);
    onLoop([] {});
    EXPECT_TRUE(passes.reaches(before + 1));
    ASSERT_TRUE(fallsAsleep(thread));
    EXPECT_EQ(passes.value(), before + 1);
}

TEST_F(EventLoopIdleTask, RunsAgainAfterTheDelayItAnswered) {
    constexpr milliseconds delay{60};
    std::vector<steady_clock::time_point> times;
    loop->setIdleTaskSync([&]() -> Answer {
        times.push_back(steady_clock::now());
        ++passes;
        return passes.value() < 5 ? Answer(delay) : std::nullopt;
    });
    const Running running = start();
    ASSERT_TRUE(passes.reaches(5));
    // The first two may follow each other faster, because the bus's first messages are events.
    const auto collected = onLoop([&] { return times; });
    for (std::size_t i = 2; i < 5; ++i) {
        EXPECT_GE(collected[i] - collected[i - 1], delay - milliseconds(1)) << "pass " << i;
    }
}

// A busy machine delays some passes, a wrong delay all of them.
TEST_F(EventLoopIdleTask, RunsAgainWhenTheDelayIsOverAndNotLater) {
    constexpr milliseconds delay{200};
    std::optional<steady_clock::time_point> former;
    std::atomic<bool> inTime = false;
    loop->setIdleTaskSync([&]() -> Answer {
        const auto now = steady_clock::now();
        inTime = inTime || (former && now - *former >= delay && now - *former < delay * 3 / 2);
        former = now;
        return delay;
    });
    const Running running = start();
    EXPECT_TRUE(eventually([&] { return inTime.load(); }));
}

TEST_F(EventLoopIdleTask, RunsAgainAfterAnExceptionWithoutAnEvent) {
    loop->setIdleTaskSync([&]() -> Answer {
        ++passes;
        throw std::runtime_error("out of luck");
    });
    const Running running = start();
    ASSERT_TRUE(fallsAsleep(loopThread()));
    EXPECT_TRUE(passes.reaches(passes.value() + 2));
}

TEST_F(EventLoopIdleTask, SleepsThroughADelayTooLongToBeAdded) {
    countIdlePasses(passes, milliseconds::max());
    const Running running = start();
    const pid_t thread = loopThread();
    ASSERT_TRUE(passes.reaches(1));
    EXPECT_TRUE(fallsAsleep(thread));
}

class EventLoopHurriedIdleTask : public EventLoopIdleTask {
  protected:
    // The gaps between the passes after one event. The first three passes return `delay`, the fourth nullopt.
    std::vector<steady_clock::duration> gaps(milliseconds delay) {
        EXPECT_TRUE(fallsAsleep(loopThread()));
        std::vector<steady_clock::time_point> times;
        std::promise<void> collected;
        onLoop([&] {
            loop->setIdleTaskSync([&]() -> Answer {
                times.push_back(steady_clock::now());
                if (times.size() < 4) {
                    return delay;
                }
                loop->setIdleTaskSync({});
                collected.set_value();
                return std::nullopt;
            });
        });
        collected.get_future().wait();
        return {times[1] - times[0], times[2] - times[1], times[3] - times[2]};
    }
};

TEST_F(EventLoopHurriedIdleTask, RunsAgainAtOnceAndThenNoFasterThanEveryTenMilliseconds) {
    const Running running = start();
    for (const milliseconds delay : {milliseconds(0), milliseconds(-1), milliseconds::min()}) {
        const bool atOnce = eventually([&] {
            const auto measured = gaps(delay);
            EXPECT_GE(measured[1], milliseconds(10)) << "delay " << delay.count();
            EXPECT_GE(measured[2], milliseconds(10)) << "delay " << delay.count();
            return measured[0] < milliseconds(10);
        });
        EXPECT_TRUE(atOnce) << "delay " << delay.count();
    }
}

TEST_F(EventLoopIdleTask, DoesNotSpinWhenItAnswersZeroOrLessEachTime) {
    for (const milliseconds delay : {milliseconds(0), milliseconds(-1), milliseconds::min()}) {
        Counter counted;
        loop = std::make_unique<dbus::EventLoop>();
        countIdlePasses(counted, delay);
        loop->startEventLoopAsync();
        onLoop([] {});
        const auto from = steady_clock::now();
        const auto before = counted.value();
        ASSERT_TRUE(counted.reaches(before + 10));
        const auto passed = counted.value() - before;
        const auto elapsed = std::chrono::duration_cast<milliseconds>(steady_clock::now() - from);
        // Beyond one in 10 ms: the first after the task, and those around the ends of the window.
        EXPECT_LE(passed, static_cast<std::size_t>(elapsed.count() / 10 + 4)) << "delay " << delay.count();
        end();
    }
}

TEST_F(EventLoopIdleTask, MayBeReplacedFromInsideItself) {
    Counter replaced;
    loop->setIdleTaskSync([&, text = std::string("still here, as long as it runs")]() -> Answer {
        countIdlePasses(replaced);
        EXPECT_EQ(text, "still here, as long as it runs");
        return milliseconds(1);
    });
    const Running running = start();
    EXPECT_TRUE(replaced.reaches(1));
}

TEST_F(EventLoopIdleTask, MayBeTakenAway) {
    countIdlePasses(passes, milliseconds(1));
    const Running running = start();
    ASSERT_TRUE(passes.reaches(3));
    const pid_t thread = loopThread();
    onLoop([&] { loop->setIdleTaskSync({}); });
    EXPECT_TRUE(fallsAsleep(thread));
    EXPECT_TRUE(log.texts(spdlog::level::err).empty());
}

TEST_F(EventLoopIdleTask, RunsAfterASignalAndAfterTheTimer) {
    countIdlePasses(passes);
    BusPeer peer{peerName};
    Counter handled;
    Counter expired;
    const Running running = start();
    registerForChanged(false, [&](dbus::MessageDecoder&) { ++handled; });
    const pid_t thread = loopThread();

    ASSERT_TRUE(fallsAsleep(thread));
    const auto before = passes.value();
    peer.emit(changed, "");
    ASSERT_TRUE(handled.reaches(1));
    EXPECT_TRUE(passes.reaches(before + 1));

    onLoop([&] {
        loop->setTimerCompletedTask([&] {
            ++expired;
            loop->configureTimerSync(false, milliseconds(0));
        });
        loop->configureTimerSync(true, milliseconds(100));
    });
    ASSERT_TRUE(passes.reaches(before + 2));
    ASSERT_TRUE(expired.reaches(1));
    EXPECT_TRUE(passes.reaches(before + 3));
}

}  // namespace
}  // namespace kaz::test
