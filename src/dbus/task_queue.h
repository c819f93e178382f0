#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace kaz::dbus {

// A queue of tasks in front of the platform's loop, first in, first out. Any thread may use it, but only one
// thread may call runOne().
class TaskQueue {
  public:
    using Task = std::function<void()>;

    // The most tasks that may wait. A program that adds tasks faster than they run must not fill the memory.
    static constexpr std::size_t limit = 4096;

    // Returns true if the task was queued; then call runOne() once. Beyond the limit the task is dropped with
    // a warning in the log; the next warning comes only after the queue was half empty. After close() it is
    // dropped without a warning.
    bool push(Task task);

    // Runs and destroys the first task, if there is one.
    void runOne() noexcept;

    // Drops waiting tasks. From now on no task begins.
    void close() noexcept;

  private:
    std::mutex mutex_;
    std::deque<Task> tasks_;
    bool full_ = false;  // the warning was logged
    bool closed_ = false;
};

}  // namespace kaz::dbus
