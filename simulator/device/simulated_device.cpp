#include "simulator/device/simulated_device.h"

#include "base/signals_blocked.h"

#include <sys/epoll.h>

#include <utility>

namespace kaz::sim {

SimulatedDevice::SimulatedDevice(Options options) {
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

SimulatedDevice::~SimulatedDevice() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wakeUp_.set();
    thread_.join();
}

void SimulatedDevice::main(Options options, std::promise<void>& ready) {
    try {
        Event event;
        checked(sd_event_new(dbus::out(event)), "sd_event_new");
        Device device(event.get(), std::move(options), log_);
        auto woken = [this, &device] { runTasks(device); };
        EventSource tasks;
        checked(sd_event_add_io(
                    event.get(), dbus::out(tasks), wakeUp_.get(), EPOLLIN,
                    [](sd_event_source*, int, std::uint32_t, void* data) {
                        (*static_cast<decltype(woken)*>(data))();
                        return 0;
                    },
                    &woken),
                "sd_event_add_io");
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

void SimulatedDevice::post(Task task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wakeUp_.set();
}

void SimulatedDevice::runTasks(Device& device) {
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
