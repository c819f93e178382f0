#include "dbus/task_queue.h"

#include "base/guard.h"
#include "base/log.h"

#include <utility>

namespace kaz::dbus {

bool TaskQueue::push(Task task) {
    {
        const std::lock_guard lock(mutex_);
        if (closed_) {
            return false;
        }
        if (tasks_.size() < limit) {
            tasks_.push_back(std::move(task));
            return true;
        }
        if (std::exchange(full_, true)) {
            return false;
        }
    }
    log::warn("{} tasks are waiting, dropping what is added until some have run", limit);
    return false;
}

void TaskQueue::runOne() noexcept {
    Task task;
    {
        const std::lock_guard lock(mutex_);
        if (tasks_.empty()) {
            return;
        }
        task = std::move(tasks_.front());
        tasks_.pop_front();
        full_ = full_ && tasks_.size() > limit / 2;  // one warning per flood
    }
    runGuarded("task", task);
}

void TaskQueue::close() noexcept {
    std::deque<Task> dropped;  // destroyed without the lock: captures of a task may push again
    const std::lock_guard lock(mutex_);
    closed_ = true;
    dropped.swap(tasks_);
}

}  // namespace kaz::dbus
