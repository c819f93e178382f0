#include <kaz/dbus/event_loop.h>

#include "base/event_fd.h"
#include "base/non_copyable.h"
#include "base/sd_bus/handles.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <list>
#include <mutex>
#include <thread>
#include <utility>

namespace kaz::dbus {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

struct EventLoop::Loop : NonCopyable {
    Loop() = default;
    struct Handler {
        bool temporary;
        std::function<void(MessageDecoder&)> function;
        SlotPtr slot;
    };

    ~Loop();

    void run();
    bool runTask();
    bool processBus();
    bool runTimer();
    void sleep(std::optional<milliseconds> delay) const;

    EventFd wakeUp;
    std::mutex mutex;
    std::deque<std::function<void()>> tasks;
    std::atomic<bool> stopped = false;
    std::function<std::optional<milliseconds>()> idleTask;
    std::function<void()> timerTask;
    milliseconds period{};
    std::optional<steady_clock::time_point> expiry;
    BusPtr bus;
    std::list<Handler> handlers;
    std::thread thread;
};

EventLoop::Loop::~Loop() {
    if (thread.joinable()) {
        thread.join();
    }
}

void EventLoop::Loop::run() {
    sd_bus_open_system(out(bus));
    while (!stopped) {
        const bool ran = runTask();
        const bool processed = processBus();
        const bool expired = runTimer();
        if (!ran && !processed && !expired && !stopped) {
            sleep(idleTask ? idleTask() : std::nullopt);
        }
    }
    handlers.clear();
    bus.reset();
}

bool EventLoop::Loop::runTask() {
    std::function<void()> task;
    {
        const std::lock_guard lock(mutex);
        if (tasks.empty()) {
            return false;
        }
        task = std::move(tasks.front());
        tasks.pop_front();
    }
    task();
    return true;
}

bool EventLoop::Loop::processBus() {
    return bus && sd_bus_is_open(bus.get()) > 0 && sd_bus_process(bus.get(), nullptr) > 0;
}

bool EventLoop::Loop::runTimer() {
    if (!expiry || *expiry > steady_clock::now()) {
        return false;
    }
    expiry = steady_clock::now() + period;
    timerTask();
    return true;
}

// Until a task is pushed, a message arrives, the timer expires, or the delay is over.
void EventLoop::Loop::sleep(std::optional<milliseconds> delay) const {
    if (expiry) {
        const auto left = std::chrono::ceil<milliseconds>(*expiry - steady_clock::now());
        delay = delay ? std::min(*delay, left) : left;
    }
    std::array<pollfd, 2> waits{{{wakeUp.get(), POLLIN, 0}, {-1, POLLIN, 0}}};
    if (bus && sd_bus_is_open(bus.get()) > 0) {
        waits[1].fd = sd_bus_get_fd(bus.get());
        std::uint64_t due = UINT64_MAX;
        if (sd_bus_get_timeout(bus.get(), &due) > 0 && due == 0) {
            return;  // a call read messages ahead, which the descriptor does not show
        }
    }
    ::poll(waits.data(), waits.size(), delay ? std::max(0, static_cast<int>(delay->count())) : -1);
    wakeUp.clear();
}

EventLoop::EventLoop() : loop_(std::make_unique<Loop>()) {}

EventLoop::~EventLoop() {
    stopEventLoopAsync();
}

void EventLoop::startEventLoopAsync() {
    loop_->thread = std::thread([loop = loop_.get()] { loop->run(); });
}

void EventLoop::stopEventLoopAsync() {
    loop_->stopped = true;
    loop_->wakeUp.set();
}

void EventLoop::pushTaskAsync(std::function<void()> task) {
    const std::lock_guard lock(loop_->mutex);
    loop_->tasks.push_back(std::move(task));
    loop_->wakeUp.set();
}

void EventLoop::setIdleTaskSync(std::function<std::optional<milliseconds>()> task) {
    loop_->idleTask = std::move(task);
}

void EventLoop::configureTimerSync(bool enable, milliseconds period) {
    loop_->period = period;
    loop_->expiry.reset();
    if (enable) {
        loop_->expiry = steady_clock::now() + period;
    }
}

void EventLoop::setTimerCompletedTask(std::function<void()> task) {
    loop_->timerTask = std::move(task);
}

void EventLoop::registerSignalHandlerSync(const char* sender, const char* path, const char* interface,
                                          const char* member, bool temporary,
                                          std::function<void(MessageDecoder&)> handler) {
    loop_->handlers.push_back({temporary, std::move(handler), nullptr});
    const auto run = [](sd_bus_message* message, void* registered, sd_bus_error*) {
        MessageDecoder decoder{message, true};
        const auto function = static_cast<Loop::Handler*>(registered)->function;  // which may remove itself
        function(decoder);
        return 0;
    };
    Loop::Handler& registered = loop_->handlers.back();
    sd_bus_match_signal(loop_->bus.get(), out(registered.slot), sender, path, interface, member, run,
                        &registered);
}

void EventLoop::removeTemporarySignalHandlersSync() {
    loop_->handlers.remove_if([](const Loop::Handler& handler) { return handler.temporary; });
}

sd_bus* EventLoop::getSdBusHandle() {
    return loop_->bus.get();
}

}  // namespace kaz::dbus
