#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "base/replaceable_task.h"
#include "platform/dbus/clock.h"

namespace kaz::dbus {

// When the idle task is to run, and its runs. A pass falls due with every event, at once when the task
// answered zero or less, and otherwise after the delay it answered.
class IdleTask {
  public:
    using Task = std::function<std::optional<std::chrono::milliseconds>()>;

    void set(Task task);

    // Something has happened: a pass is due now, if none was before.
    void noteEvent(Clock::time_point now) noexcept;

    bool due(Clock::time_point now) const noexcept { return dueAt_ && *dueAt_ <= now; }

    // Whether a due pass has waited so long for a quiet moment that it is to run anyway.
    bool overdue(Clock::time_point now) const noexcept;

    // How long the loop may sleep, in us; UINT64_MAX for as long as nothing happens.
    uint64_t sleep(Clock::time_point now) const noexcept;

    // One pass.
    void run() noexcept;

  private:
    std::optional<Clock::time_point> nextPass(std::optional<std::chrono::milliseconds> answer) noexcept;

    ReplaceableTask<std::optional<std::chrono::milliseconds>()> task_;
    std::optional<Clock::time_point> dueAt_;
    bool hurried_ = false;  // the last answer was zero or less
};

}  // namespace kaz::dbus
