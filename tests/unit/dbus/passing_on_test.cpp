// What reaches the platform's event loop unchanged. This program replaces two of its operations.
#include "dbus/bus.h"
#include "doubles/recording_log/recording_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kaz::test {
namespace {

using std::chrono::milliseconds;
using Delay = std::optional<milliseconds>;

std::vector<std::pair<bool, milliseconds>> timers;
std::function<Delay()> idleTask;

}  // namespace
}  // namespace kaz::test

void kaz::dbus::EventLoop::configureTimerSync(bool enable, std::chrono::milliseconds period) {
    test::timers.emplace_back(enable, period);
}

void kaz::dbus::EventLoop::setIdleTaskSync(std::function<std::optional<std::chrono::milliseconds>()> task) {
    test::idleTask = std::move(task);
}

namespace kaz::test {
namespace {

class PassingOn : public ::testing::Test {
  protected:
    RecordingLog log;
    dbus::Bus bus;
};

TEST_F(PassingOn, PeriodOfTheTimerIsNotChanged) {
    timers.clear();
    const std::vector<std::pair<bool, milliseconds>> orders{
        {true, milliseconds(60000)}, {false, milliseconds(60000)}, {true, milliseconds(1)},
        {true, milliseconds(0)},     {false, milliseconds(-1)},    {true, milliseconds::max()}};
    for (const auto& [enable, period] : orders) {
        bus.configureTimer(enable, period);
    }
    EXPECT_EQ(timers, orders);
}

TEST_F(PassingOn, DelayOfTheIdleTaskIsNotChanged) {
    Delay next;
    bus.setIdleTask([&] { return next; });
    for (const Delay delay :
         {Delay(), Delay(0), Delay(1), Delay(2000), Delay(-1), Delay(milliseconds::max())}) {
        next = delay;
        EXPECT_EQ(idleTask(), delay);
    }
}

// Otherwise what the task waits for would be late until the next event.
TEST_F(PassingOn, IdleTaskThatThrowsRunsAgainInASecond) {
    bus.setIdleTask([]() -> Delay { throw std::runtime_error("no luck"); });
    EXPECT_EQ(idleTask(), milliseconds(1000));
    EXPECT_EQ(log.records(), RecordingLog::Records{error("Exception from idle task: no luck")});
}

}  // namespace
}  // namespace kaz::test
