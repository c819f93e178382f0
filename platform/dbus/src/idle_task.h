#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "base/replaceable_task.h"
#include "platform/dbus/clock.h"

namespace kaz::dbus {

// Schedules and runs the idle task. A pass becomes due with every event, and after the delay that the task
// returned. Zero or less means at once, but 10 ms later if the pass before returned that too.
class IdleTask {
  public:
    using Task = std::function<std::optional<std::chrono::milliseconds>()>;

    void set(Task task);

    // An event happened, so a pass is due now.
    void noteEvent(Clock::time_point now) noexcept;

    bool due(Clock::time_point now) const noexcept { return dueAt_ && *dueAt_ <= now; }

    // Whether a due pass has waited so long for an idle moment that it runs anyway.
    bool overdue(Clock::time_point now) const noexcept;

    // When the next pass is due; empty: after the next event.
    std::optional<Clock::time_point> dueAt() const noexcept { return dueAt_; }

    // Runs one pass.
    void run() noexcept;

  private:
    std::optional<Clock::time_point> nextPass(std::optional<std::chrono::milliseconds> answer) noexcept;

    ReplaceableTask<std::optional<std::chrono::milliseconds>()> task_;
    std::optional<Clock::time_point> dueAt_;
    bool hurried_ = false;  // the task last returned zero or less
};

}  // namespace kaz::dbus
