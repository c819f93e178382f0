#pragma once

#include <chrono>
#include <functional>

#include "base/replaceable_task.h"
#include "platform/dbus/handles.h"

namespace kaz::dbus {

// Runs a task periodically until it is disarmed. Expiries that pass while the loop is busy are not made up
// for.
class Timer {
  public:
    using Task = std::function<void()>;

    explicit Timer(sd_event* event);

    // A period below 1 ms counts as 1 ms.
    void configure(bool enable, std::chrono::milliseconds period) noexcept;
    void setTask(Task task);

  private:
    static int onExpired(sd_event_source* source, uint64_t due, void* timer);
    void expired(uint64_t due) noexcept;
    void arm(uint64_t due) noexcept;

    uint64_t period_ = 1;  // in us, as all times here
    ReplaceableTask<void()> task_;
    SourcePtr source_;
};

}  // namespace kaz::dbus
