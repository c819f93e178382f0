#include "platform/dbus/task_queue.h"

#include <sys/epoll.h>

#include <utility>

#include "base/checked.h"
#include "base/guard.h"
#include "base/log.h"

namespace kaz::dbus {
namespace {

int justWake(sd_event_source* /*source*/, int /*fd*/, uint32_t /*events*/, void* /*data*/) {
    return 0;
}

}  // namespace

TaskQueue::TaskQueue(sd_event* event) {
    sd_event_source* source = nullptr;
    checked(sd_event_add_io(event, &source, wakeUp_.get(), EPOLLIN, &justWake, nullptr), "sd_event_add_io");
    source_.reset(source);
    checked(sd_event_source_set_priority(source, SD_EVENT_PRIORITY_IDLE), "sd_event_source_set_priority");
}

void TaskQueue::push(Task task) {
    const std::lock_guard lock(mutex_);
    if (closed_) {
        return;
    }
    tasks_.push_back(std::move(task));
    if (tasks_.size() == 1) {
        wakeUp_.set();
    }
}

void TaskQueue::close() noexcept {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    wakeUp_.set();
}

void TaskQueue::drop() noexcept {
    std::deque<Task> dropped;  // destroyed without the lock: captures of a task may push again
    const std::lock_guard lock(mutex_);
    dropped.swap(tasks_);
}

bool TaskQueue::runOne() noexcept {
    Task task;
    {
        const std::lock_guard lock(mutex_);
        if (closed_ || tasks_.empty()) {
            return false;
        }
        task = std::move(tasks_.front());
        tasks_.pop_front();
        if (tasks_.empty()) {
            wakeUp_.clear();
        }
    }
    runGuarded("task", task);
    return true;
}

}  // namespace kaz::dbus
