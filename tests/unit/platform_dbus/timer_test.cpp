#include <atomic>
#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

class EventLoopTimer : public LoopTest {
  protected:
    Counter expiries;
};

TEST_F(EventLoopTimer, ExpiresEveryPeriodUntilItIsDisarmed) {
    constexpr milliseconds period{40};
    std::vector<steady_clock::time_point> times;
    loop->setTimerCompletedTask([&] {
        times.push_back(steady_clock::now());
        ++expiries;
    });
    const Running running = start();
    const auto armed = onLoop([&] {
        const auto now = steady_clock::now();
        loop->configureTimerSync(true, period);
        return now;
    });
    ASSERT_TRUE(expiries.reaches(4));
    onLoop([&] { loop->configureTimerSync(false, period); });
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_GE(times[i] - armed, period * (static_cast<int>(i) + 1)) << "expiry " << i;
    }
    const auto count = expiries.value();
    EXPECT_TRUE(fallsAsleep(loopThread()));
    EXPECT_EQ(expiries.value(), count);
}

// A busy machine delays some expiries, a wrong period all of them.
TEST_F(EventLoopTimer, ExpiresWhenThePeriodIsOverAndNotLater) {
    constexpr milliseconds period{200};
    steady_clock::time_point expired;
    loop->setTimerCompletedTask([&] {
        expired = steady_clock::now();
        loop->configureTimerSync(false, period);
        ++expiries;
    });
    const Running running = start();
    EXPECT_TRUE(eventually([&] {
        const auto before = expiries.value();
        const auto armed = onLoop([&] {
            loop->configureTimerSync(true, period);
            return steady_clock::now();
        });
        EXPECT_TRUE(expiries.reaches(before + 1));
        return onLoop([&] { return expired; }) - armed < period * 3 / 2;
    }));
}

TEST_F(EventLoopTimer, ArmedBeforeTheStartExpiresOnceTheLoopRuns) {
    loop->setTimerCompletedTask([&] { ++expiries; });
    loop->configureTimerSync(true, milliseconds(10));
    const Running running = start();
    EXPECT_TRUE(expiries.reaches(2));
}

TEST_F(EventLoopTimer, RestartsThePeriodWhenItIsArmedAgain) {
    constexpr milliseconds period{100};
    steady_clock::time_point lastArmed;
    std::vector<steady_clock::duration> waits;
    loop->setTimerCompletedTask([&] {
        waits.push_back(steady_clock::now() - lastArmed);
        ++expiries;
    });
    // Arms the timer repeatedly for three periods. Each expiry must come a whole period after the last arming.
    const auto until = steady_clock::now() + 3 * period;
    std::function<void()> rearm = [&] {
        lastArmed = steady_clock::now();
        loop->configureTimerSync(true, period);
        if (lastArmed < until) {
            loop->pushTaskAsync(rearm);
        }
    };
    loop->pushTaskAsync(rearm);
    const Running running = start();
    ASSERT_TRUE(expiries.reaches(1));
    for (const auto wait : onLoop([&] { return waits; })) {
        EXPECT_GE(wait, period);
    }
}

TEST_F(EventLoopTimer, MayBeDisarmedFromItsOwnTask) {
    loop->setTimerCompletedTask([&] {
        ++expiries;
        loop->configureTimerSync(false, milliseconds(10));
    });
    const Running running = start();
    onLoop([&] { loop->configureTimerSync(true, milliseconds(10)); });
    ASSERT_TRUE(expiries.reaches(1));
    EXPECT_TRUE(fallsAsleep(loopThread()));
    EXPECT_EQ(expiries.value(), 1U);
}

TEST_F(EventLoopTimer, MayBeArmedAgainFromItsOwnTask) {
    steady_clock::time_point armed;
    steady_clock::duration wait{};
    loop->setTimerCompletedTask([&] {
        if (expiries.value() == 0) {
            armed = steady_clock::now();
            loop->configureTimerSync(true, milliseconds(150));
        } else if (expiries.value() == 1) {
            wait = steady_clock::now() - armed;
        }
        ++expiries;
    });
    const Running running = start();
    onLoop([&] { loop->configureTimerSync(true, milliseconds(5)); });
    ASSERT_TRUE(expiries.reaches(2));
    EXPECT_GE(onLoop([&] { return wait; }), milliseconds(150));
}

TEST_F(EventLoopTimer, MayReplaceItsTaskFromInside) {
    Counter replaced;
    loop->setTimerCompletedTask([&, text = std::string("still here, as long as it runs")] {
        loop->setTimerCompletedTask([&] { ++replaced; });
        EXPECT_EQ(text, "still here, as long as it runs");
    });
    const Running running = start();
    onLoop([&] { loop->configureTimerSync(true, milliseconds(5)); });
    EXPECT_TRUE(replaced.reaches(1));
}

TEST_F(EventLoopTimer, DoesNotMakeUpForExpiriesWhileTheLoopWasBusy) {
    constexpr milliseconds period{20};
    std::vector<steady_clock::time_point> times;
    loop->setTimerCompletedTask([&] {
        times.push_back(steady_clock::now());
        ++expiries;
    });
    const Running running = start();
    const auto busyUntil = onLoop([&] {
        const auto end = steady_clock::now() + 10 * period;
        loop->configureTimerSync(true, period);
        while (steady_clock::now() < end) {
        }
        return end;
    });
    ASSERT_TRUE(expiries.reaches(6));
    onLoop([&] { loop->configureTimerSync(false, period); });
    // One expiry may be due at the end of the busy time, the others come a period apart.
    for (int i = 1; i < 6; ++i) {
        EXPECT_GE(times[static_cast<std::size_t>(i)] - busyUntil, (i - 1) * period) << "expiry " << i;
    }
}

TEST_F(EventLoopTimer, TakesAPeriodOfZeroOrLessForOneMillisecond) {
    for (const milliseconds period : {milliseconds(0), milliseconds(-5), milliseconds::min()}) {
        loop = std::make_unique<dbus::EventLoop>();
        std::atomic<std::size_t> count = 0;
        loop->setTimerCompletedTask([&] { ++count; });
        const auto armed = steady_clock::now();
        loop->configureTimerSync(true, period);
        loop->startEventLoopAsync();
        EXPECT_TRUE(eventually([&] { return count >= 20; })) << "period " << period.count();
        const std::size_t expired = count;
        const auto elapsed = std::chrono::ceil<milliseconds>(steady_clock::now() - armed);
        EXPECT_LE(expired, static_cast<std::size_t>(elapsed.count())) << "period " << period.count();
        end();
    }
}

TEST_F(EventLoopTimer, NeverExpiresWithAPeriodTooLongToBeAdded) {
    loop->setTimerCompletedTask([&] { ++expiries; });
    const Running running = start();
    onLoop([&] { loop->configureTimerSync(true, milliseconds::max()); });
    EXPECT_TRUE(fallsAsleep(loopThread()));
    EXPECT_EQ(expiries.value(), 0U);
}

TEST_F(EventLoopTimer, WithoutATaskExpiresQuietly) {
    Counter passes;
    const Running running = start();
    onLoop([&] {
        countIdlePasses(passes);
        loop->configureTimerSync(true, milliseconds(5));
    });
    EXPECT_TRUE(passes.reaches(5));
    EXPECT_TRUE(log.records().empty());
}

}  // namespace
}  // namespace kaz::test
