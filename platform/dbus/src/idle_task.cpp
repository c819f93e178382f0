#include "platform/dbus/idle_task.h"

#include <utility>

#include "base/guard.h"

namespace kaz::dbus {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds patience{100};
constexpr milliseconds shortestPeriod{10};  // of passes that return zero or less
constexpr milliseconds pauseAfterException{1000};

}  // namespace

void IdleTask::set(Task task) {
    task_.set(std::move(task));
}

void IdleTask::noteEvent(Clock::time_point now) noexcept {
    dueAt_ = dueAt_ ? std::min(*dueAt_, now) : now;
}

bool IdleTask::overdue(Clock::time_point now) const noexcept {
    return dueAt_ && *dueAt_ + patience <= now;
}

void IdleTask::run() noexcept {
    std::optional<milliseconds> answer = pauseAfterException;  // what the task would have answered is unknown
    runGuarded("idle task", [&] { answer = task_(); });
    dueAt_ = nextPass(answer);
}

std::optional<Clock::time_point> IdleTask::nextPass(std::optional<milliseconds> answer) noexcept {
    const bool hurriedBefore = std::exchange(hurried_, answer && *answer <= milliseconds::zero());
    if (!answer) {
        return std::nullopt;
    }
    if (!hurried_) {
        return Clock::now() + std::min<milliseconds>(*answer, longestDelay);
    }
    return Clock::now() + (hurriedBefore ? shortestPeriod : milliseconds::zero());
}

}  // namespace kaz::dbus
