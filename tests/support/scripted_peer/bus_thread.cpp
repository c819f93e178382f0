#include "support/scripted_peer/bus_thread.h"

#include <poll.h>

#include <array>
#include <future>
#include <utility>

namespace kaz::test {

BusThread::BusThread(const std::string& address, const Job& prepare, Receiver receiver)
    : bus_(dbus::connectTo(address)), receiver_(std::move(receiver)) {
    prepare(bus_.get());
    thread_ = std::thread([this] { serve(); });
}

BusThread::~BusThread() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wakeUp_.set();
    thread_.join();
}

void BusThread::run(const Job& job) {
    std::promise<void> done;
    {
        const std::lock_guard lock(mutex_);
        jobs_.emplace_back([&] {
            job(bus_.get());
            sd_bus_flush(bus_.get());
            done.set_value();
        });
    }
    wakeUp_.set();
    done.get_future().wait();
}

void BusThread::serve() {
    for (;;) {
        runJobs();
        processMessages();  // after the jobs, because a call of a job may also have read messages that follow its reply
        {
            const std::lock_guard lock(mutex_);
            if (ending_) {
                return;
            }
        }
        sleep();
    }
}

void BusThread::processMessages() {
    for (;;) {
        dbus::MessagePtr received;
        const int result = sd_bus_process(bus_.get(), dbus::out(received));
        if (received) {
            receiver_(received.get());
        }
        if (result <= 0) {
            return;
        }
    }
}

void BusThread::runJobs() {
    std::vector<std::function<void()>> jobs;
    {
        const std::lock_guard lock(mutex_);
        jobs.swap(jobs_);
    }
    for (const auto& job : jobs) {
        job();
    }
}

void BusThread::sleep() const {
    // A bus that broke has nothing to wait for any more.
    const int busFd = sd_bus_is_open(bus_.get()) > 0 ? sd_bus_get_fd(bus_.get()) : -1;
    const int events = busFd < 0 ? 0 : sd_bus_get_events(bus_.get());
    std::array<pollfd, 2> waitedFor{{{wakeUp_.get(), POLLIN, 0}, {busFd, static_cast<short>(events), 0}}};
    ::poll(waitedFor.data(), waitedFor.size(), -1);
    wakeUp_.clear();
}

}  // namespace kaz::test
