#include "simulator/device/device_thread.h"

#include <pthread.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace kaz::sim {
namespace {

// The process's own threads must get its signals.
void blockSignals() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

Event newEvent() {
    sd_event* raw = nullptr;
    check(sd_event_new(&raw), "sd_event_new");
    return Event(raw);
}

}  // namespace

SimulatedDevice::Thread::Thread(Options options) : wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wakeUp_ < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    std::promise<void> ready;
    auto whenReady = ready.get_future();
    thread_ = std::thread([this, &ready, options = std::move(options)]() mutable {
        blockSignals();
        main(std::move(options), ready);
    });
    try {
        whenReady.get();
    } catch (...) {
        thread_.join();
        ::close(wakeUp_);
        throw;
    }
}

SimulatedDevice::Thread::~Thread() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    ::eventfd_write(wakeUp_, 1);
    thread_.join();
    ::close(wakeUp_);
}

void SimulatedDevice::Thread::main(Options options, std::promise<void>& ready) {
    try {
        const Event event = newEvent();
        Device device(event.get(),
                      {options.busAddress, std::move(options.neighbourhood), options.timeScale,
                       options.configFile, options.realSupplicant},
                      log_);
        auto woken = [this, &device] { runTasks(device); };
        sd_event_source* source = nullptr;
        check(sd_event_add_io(
                  event.get(), &source, wakeUp_, EPOLLIN,
                  [](sd_event_source*, int, std::uint32_t, void* data) {
                      (*static_cast<decltype(woken)*>(data))();
                      return 0;
                  },
                  &woken),
              "sd_event_add_io");
        const EventSource tasks(source);
        while (!device.ready()) {
            check(sd_event_run(event.get(), UINT64_MAX), "sd_event_run");
        }
        ready.set_value();
        for (bool stop = false; !stop;) {
            check(sd_event_run(event.get(), UINT64_MAX), "sd_event_run");
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
    ::eventfd_write(wakeUp_, 1);
}

void SimulatedDevice::Thread::runTasks(Device& device) {
    eventfd_t ignored = 0;
    ::eventfd_read(wakeUp_, &ignored);
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
