#include "support/scripted_peer/bus_thread.h"

#include "support/scripted_peer/require_success.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <future>
#include <utility>

namespace kaz::test {

BusThread::BusThread(const std::string& address, const Job& prepare, Receiver receiver)
    : receiver_(std::move(receiver)), wakeUp_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    sd_bus* bus = nullptr;
    requireSuccess(sd_bus_new(&bus), "sd_bus_new");
    bus_.reset(bus);
    requireSuccess(sd_bus_set_address(bus, address.c_str()), "sd_bus_set_address");
    requireSuccess(sd_bus_set_bus_client(bus, 1), "sd_bus_set_bus_client");
    requireSuccess(sd_bus_start(bus), "sd_bus_start");
    prepare(bus);
    thread_ = std::thread([this] { serve(); });
}

BusThread::~BusThread() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake();
    thread_.join();
    ::close(wakeUp_);
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
    wake();
    done.get_future().wait();
}

void BusThread::serve() {
    for (;;) {
        processMessages();
        runJobs();
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
        sd_bus_message* received = nullptr;
        const int result = sd_bus_process(bus_.get(), &received);
        const dbus::MessagePtr owned(received);
        if (received != nullptr) {
            receiver_(received);
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
    std::array<pollfd, 2> waitedFor{{{wakeUp_, POLLIN, 0}, {busFd, static_cast<short>(events), 0}}};
    ::poll(waitedFor.data(), waitedFor.size(), -1);
    eventfd_t ignored = 0;
    ::eventfd_read(wakeUp_, &ignored);
}

void BusThread::wake() const {
    ::eventfd_write(wakeUp_, 1);
}

}  // namespace kaz::test
