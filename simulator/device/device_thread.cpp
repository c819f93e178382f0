#include "simulator/device/device_thread.h"

#include <sys/epoll.h>

#include <cstdint>

#include "base/signals_blocked.h"

namespace kaz::sim {
namespace {

Event newEvent() {
    sd_event* raw = nullptr;
    checked(sd_event_new(&raw), "sd_event_new");
    return Event(raw);
}

}  // namespace

SimulatedDevice::Thread::Thread(Options options) {
    std::promise<void> ready;
    auto whenReady = ready.get_future();
    {
        const SignalsBlocked blocked;
        thread_ = std::thread(
            [this, &ready, options = std::move(options)]() mutable { main(std::move(options), ready); });
    }
    try {
        whenReady.get();
    } catch (...) {
        thread_.join();
        throw;
    }
}

SimulatedDevice::Thread::~Thread() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wakeUp_.set();
    thread_.join();
}

void SimulatedDevice::Thread::main(Options options, std::promise<void>& ready) {
    try {
        const Event event = newEvent();
        Device device(event.get(), std::move(options), log_);
        auto woken = [this, &device] { runTasks(device); };
        sd_event_source* source = nullptr;
        checked(sd_event_add_io(
                    event.get(), &source, wakeUp_.get(), EPOLLIN,
                    [](sd_event_source*, int, std::uint32_t, void* data) {
                        (*static_cast<decltype(woken)*>(data))();
                        return 0;
                    },
                    &woken),
                "sd_event_add_io");
        const EventSource tasks(source);
        while (!device.ready()) {
            checked(sd_event_run(event.get(), UINT64_MAX), "sd_event_run");
        }
        ready.set_value();
        for (bool stop = false; !stop;) {
            checked(sd_event_run(event.get(), UINT64_MAX), "sd_event_run");
            const std::lock_guard lock(mutex_);
            stop = stopping_;
        }
    } catch (...) {
        try {
            ready.set_exception(std::current_exception());
        } catch (const std::future_error&) {
            throw;
        }
    }
}

void SimulatedDevice::Thread::post(Task task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wakeUp_.set();
}

void SimulatedDevice::Thread::runTasks(Device& device) {
    wakeUp_.clear();
    std::deque<Task> tasks;
    {
        const std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
    }
    for (const Task& task : tasks) {
        task(device);
    }
}

}  // namespace kaz::sim
