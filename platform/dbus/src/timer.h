#pragma once

#include <chrono>
#include <functional>

#include "base/replaceable_task.h"
#include "platform/dbus/handles.h"

namespace kaz::dbus {

// Runs a task periodically until it is disarmed. Expiries while the loop is busy are skipped.
class Timer {
  public:
    using Task = std::function<void()>;

    explicit Timer(sd_event* event);

    // The shortest period is 1 ms.
    void configure(bool enable, std::chrono::milliseconds period) noexcept;
    void setTask(Task task);

  private:
    static int onExpired(sd_event_source* source, uint64_t due, void* timer);
    void expired(uint64_t due) noexcept;
    void arm(uint64_t due) noexcept;

    uint64_t period_ = 1;  // in us, like all times here
    ReplaceableTask<void()> task_;
    SourcePtr source_;
};

}  // namespace kaz::dbus
