#include <kaz/dbus/event_loop.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "base/checked.h"
#include "base/errno_text.h"
#include "base/guard.h"
#include "base/log.h"
#include "base/signals_blocked.h"
#include "platform/dbus/clock.h"
#include "platform/dbus/connection.h"
#include "platform/dbus/handles.h"
#include "platform/dbus/idle_task.h"
#include "platform/dbus/task_queue.h"
#include "platform/dbus/timer.h"

namespace kaz::dbus {
namespace {

using std::chrono::milliseconds;

EventPtr makeEvent() {
    sd_event* event = nullptr;
    checked(sd_event_new(&event), "sd_event_new");
    return EventPtr(event);
}

}  // namespace

// A turn handles one bus message or one expiry of the timer, as sd-event selects, then one task, and without
// any of these the idle task. sd-event alone is not fair: it prefers the source that has waited longest, but
// for messages that the bus connection has read ahead it does not know how long they have waited.
class EventLoop::Impl : NonCopyable {
  public:
    ~Impl();
    Impl() = default;

    void start();
    void stop() noexcept;

    // Whether this is a forked child: it has the object but not the thread.
    bool inherited() const noexcept { return process_ != ::getpid(); }

  private:
    void run() noexcept;
    void turn() noexcept;
    int dispatch() noexcept;
    uint64_t longestSleep() const noexcept;
    void waitForEnd() noexcept;

    const pid_t process_ = ::getpid();
    EventPtr event_ = makeEvent();
    unsigned sinceEvents_ = 0;

  public:
    TaskQueue tasks{event_.get()};  // outlives the other members, whose destructors may push
    Timer timer{event_.get()};
    IdleTask idle;
    Connection connection;

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    Clock::time_point stoppedAt_;
    bool ended_ = false;
    std::thread thread_;
};

EventLoop::Impl::~Impl() {
    if (thread_.get_id() == std::this_thread::get_id()) {
        // What runs on the thread still uses the loop, and probably what is destroyed with it.
        log::error("An event loop was destroyed on its own thread; callbacks must not destroy it");
        log::flush();
        std::abort();
    }
    stop();
    if (thread_.joinable()) {
        waitForEnd();
    }
    tasks.drop();
}

void EventLoop::Impl::start() {
    const std::lock_guard lock(mutex_);
    if (!thread_.joinable() && !tasks.closed()) {
        const SignalsBlocked blocked;
        thread_ = std::thread([this] { run(); });
    }
}

void EventLoop::Impl::stop() noexcept {
    const std::lock_guard lock(mutex_);
    if (!tasks.closed()) {
        stoppedAt_ = Clock::now();
        tasks.close();
    }
}

void EventLoop::Impl::run() noexcept {
    ::pthread_setname_np(::pthread_self(), "kazdbus");
    if (!tasks.closed()) {
        connection.open(event_.get());
    }
    idle.noteEvent(Clock::now());
    while (!tasks.closed()) {
        turn();
    }
    tasks.drop();
    idle.run();
    connection.close();
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

// For each message that was read ahead, sd-bus sets a timer to wake up sd-event, which takes longer than most messages.
// So these are handled without sd-event, but not for long, because the timer and the descriptors would wait.
int EventLoop::Impl::dispatch() noexcept {
    constexpr unsigned longestRow = 16;
    if (sinceEvents_ < longestRow && connection.handleReadAhead()) {
        ++sinceEvents_;
        return 1;
    }
    sinceEvents_ = 0;
    return sd_event_run(event_.get(), longestSleep());
}

void EventLoop::Impl::turn() noexcept {
    const int dispatched = dispatch();
    if (dispatched < 0) {
        runGuarded("event loop", [&] { log::error("Event loop: {}", errnoText(dispatched)); });
        std::this_thread::sleep_for(milliseconds(100));
    }
    const bool ran = tasks.runOne();
    const bool changed = connection.endTurn();
    const auto now = Clock::now();
    const bool quiet = dispatched <= 0 && !ran && !changed;
    if (!quiet) {
        idle.noteEvent(now);
    }
    if (!tasks.closed() && (quiet ? idle.due(now) : idle.overdue(now))) {
        idle.run();
        if (connection.endTurn()) {
            idle.noteEvent(Clock::now());
        }
    }
}

// In us; UINT64_MAX: until the next event.
uint64_t EventLoop::Impl::longestSleep() const noexcept {
    const auto now = Clock::now();
    uint64_t longest = UINT64_MAX;
    for (const auto& due : {idle.dueAt(), connection.retryAt()}) {
        if (due) {
            longest = std::min(longest, toMicroseconds(std::max(*due - now, Clock::duration::zero())));
        }
    }
    return longest;
}

void EventLoop::Impl::waitForEnd() noexcept {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_until(lock, stoppedAt_ + stopGrace, [this] { return ended_; })) {
        connection.abandon();
    }
    lock.unlock();
    thread_.join();
}

EventLoop::EventLoop() : impl_(std::make_unique<Impl>()) {}

EventLoop::~EventLoop() {
    if (impl_->inherited()) {
        // The bus belongs to the parent, and a lock that another thread of the parent held is never released
        // here.
        static_cast<void>(impl_.release());
    }
}

void EventLoop::startEventLoopAsync() {
    impl_->start();
}

void EventLoop::stopEventLoopAsync() {
    if (!impl_->inherited()) {
        impl_->stop();
    }
}

void EventLoop::pushTaskAsync(std::function<void()> task) {
    impl_->tasks.push(std::move(task));
}

void EventLoop::setIdleTaskSync(std::function<std::optional<milliseconds>()> task) {
    impl_->idle.set(std::move(task));
}

void EventLoop::configureTimerSync(bool enable, milliseconds period) {
    impl_->timer.configure(enable, period);
}

void EventLoop::setTimerCompletedTask(std::function<void()> task) {
    impl_->timer.setTask(std::move(task));
}

void EventLoop::registerSignalHandlerSync(const char* sender, const char* path, const char* interface,
                                          const char* member, bool temporary,
                                          std::function<void(MessageDecoder&)> handler) {
    SignalMatch match{textOf(sender), textOf(path), textOf(interface), textOf(member)};
    if (!match.path.empty()) {
        impl_->connection.signals().add(std::move(match), temporary, std::move(handler));
    }
}

void EventLoop::removeTemporarySignalHandlersSync() {
    impl_->connection.signals().removeTemporary();
}

void EventLoop::setConnectionTaskSync(std::function<void(bool connected)> task) {
    impl_->connection.setChangeTask(std::move(task));
}

sd_bus* EventLoop::getSdBusHandle() const {
    return impl_->connection.bus();
}

}  // namespace kaz::dbus
