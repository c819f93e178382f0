#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>

#include "base/event_fd.h"
#include "platform/dbus/handles.h"

namespace kaz::dbus {

// Tasks for the loop, first in, first out. While there are any, sd_event_run() does not sleep; the tasks
// themselves run between its calls. push(), close() and closed() may be called from any thread.
class TaskQueue {
  public:
    using Task = std::function<void()>;

    explicit TaskQueue(sd_event* event);

    void push(Task task);

    // From now on no task begins, and pushed tasks are dropped. Wakes the loop.
    void close() noexcept;
    bool closed() const noexcept { return closed_; }

    // Runs the first task. Returns false if there is none, or none may begin.
    bool runOne() noexcept;

    // Destroys the queued tasks.
    void drop() noexcept;

  private:
    mutable std::mutex mutex_;
    std::deque<Task> tasks_;
    std::atomic<bool> closed_ = false;
    EventFd wakeUp_;  // readable while there are tasks, and forever after close()
    SourcePtr source_;
};

}  // namespace kaz::dbus
