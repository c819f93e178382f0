#include "platform/dbus/timer.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "base/checked.h"
#include "base/guard.h"
#include "platform/dbus/clock.h"

namespace kaz::dbus {
namespace {

using std::chrono::milliseconds;

constexpr uint64_t accuracy = 1000;

uint64_t nowInMicroseconds() noexcept {
    return toMicroseconds(Clock::now().time_since_epoch());
}

}  // namespace

Timer::Timer(sd_event* event) {
    sd_event_source* source = nullptr;
    checked(sd_event_add_time(event, &source, CLOCK_MONOTONIC, 0, accuracy, &Timer::onExpired, this),
            "sd_event_add_time");
    source_.reset(source);
    checked(sd_event_source_set_enabled(source, SD_EVENT_OFF), "sd_event_source_set_enabled");
}

void Timer::configure(bool enable, milliseconds period) noexcept {
    if (enable) {
        period_ = toMicroseconds(std::clamp<milliseconds>(period, milliseconds(1), longestDelay));
        arm(nowInMicroseconds() + period_);
    } else {
        sd_event_source_set_enabled(source_.get(), SD_EVENT_OFF);
    }
}

void Timer::setTask(Task task) {
    task_.set(std::move(task));
}

int Timer::onExpired(sd_event_source* /*source*/, uint64_t due, void* timer) {
    static_cast<Timer*>(timer)->expired(due);
    return 0;
}

void Timer::expired(uint64_t due) noexcept {
    const uint64_t now = std::max(nowInMicroseconds(), due);
    arm(due + period_ * (1 + (now - due) / period_));
    runGuarded("timer task", [this] { task_(); });
}

void Timer::arm(uint64_t due) noexcept {
    sd_event_source_set_time(source_.get(), due);
    sd_event_source_set_enabled(source_.get(), SD_EVENT_ONESHOT);
}

}  // namespace kaz::dbus
