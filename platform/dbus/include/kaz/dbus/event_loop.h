#pragma once

#include <kaz/dbus/message.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace kaz::dbus {

/// One thread that owns one connection to the system bus. It runs, one at a time: queued tasks (first in,
/// first out), handlers of bus signals, the task of one timer, and an idle task.
///
/// Tasks, signals and the timer take turns: neither endless tasks nor a storm of signals blocks the others.
/// The idle task runs when nothing else is ready, or at the latest 100 ms after the event that requires it.
/// The loop never wakes up without a cause.
///
/// An exception from a task or handler is logged at error level, and the loop continues. An idle task that throws
/// runs again after 1 s.
///
/// Without a bus, or when the bus is lost, the log gets one error. Tasks, timer and idle task continue. The
/// loop reconnects after 100 ms, then after pauses that double up to 5 s, and sleeps meanwhile. On the new
/// connection it subscribes all signal handlers again.
///
/// Any thread may call pushTaskAsync and stopEventLoopAsync. Call everything else before the start or on the
/// loop thread.
class [[gnu::visibility("default")]] EventLoop {
  public:
    /// How long after the stop a bus call may still wait for its reply.
    static constexpr std::chrono::milliseconds stopGrace{1000};

    /// The loop thread opens the connection before it runs the first task. Throws std::system_error when it
    /// cannot create an event, eventfd or timer, for example when the process has no file descriptor left.
    EventLoop();

    /// Stops the loop if it runs and waits for its thread. A bus call fails if it still waits for its reply when
    /// stopGrace has passed since the stop, and so does every later call. The task in progress and the last idle
    /// pass may run until this returns, so what they use must exist until then. This includes a pointer to the
    /// loop: std::unique_ptr::reset() clears its pointer before it destroys the loop. Must not run on the loop
    /// thread: that logs an error and aborts the process.
    ///
    /// In a child of fork() it does nothing, because thread and connection belong to the parent. The child
    /// must not use the loop otherwise.
    ~EventLoop();

    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    EventLoop(EventLoop &&) = delete;
    EventLoop& operator=(EventLoop&&) = delete;

    /// Starts the thread. Does nothing if it was started or stopped before. Throws std::system_error when no
    /// thread can be started.
    void startEventLoopAsync();

    /// Requests the stop and returns at once. The task or handler in progress finishes, queued tasks are
    /// dropped (destroyed on the loop thread), and the idle task runs one last time. A second request changes
    /// nothing. A loop that is stopped before its start never runs anything.
    void stopEventLoopAsync();

    /// Queues a task. After the stop, the task is dropped and not logged.
    void pushTaskAsync(std::function<void()> task);

    /// The idle task returns the delay after which it runs again even if nothing happens. Zero or less means
    /// at once, but at most every 10 ms if it always returns that. Without a delay it runs again only after
    /// another event.
    void setIdleTaskSync(std::function<std::optional<std::chrono::milliseconds>()> task);

    /// Arms or disarms the timer. An armed timer expires every `period` of the monotonic clock; arming it
    /// again restarts the period. The shortest period is 1 ms. Expiries during a long task are skipped.
    void configureTimerSync(bool enable, std::chrono::milliseconds period);
    /// Sets the timer's task; a later one replaces it.
    void setTimerCompletedTask(std::function<void()> task);

    /// Subscribes to a signal. Any program on the bus can send a unicast signal that matches, so the handler
    /// must check the sender. A temporary handler lives until removeTemporarySignalHandlersSync(), any other
    /// one as long as the loop. An empty path is refused and not logged. Handlers may add and remove
    /// handlers, also themselves; a new handler gets only later signals.
    void registerSignalHandlerSync(const char* sender, const char* path, const char* interface,
                                   const char* member, bool temporary,
                                   std::function<void(MessageDecoder&)> handler);
    /// Removes all temporary handlers.
    void removeTemporarySignalHandlersSync();

    /// Sets the task that runs when the connection is lost (false) and when it is restored (true). After a
    /// start without a bus, the first connection counts as restored. The task runs on the loop thread,
    /// outside of any other task or handler. A later task replaces it.
    void setConnectionTaskSync(std::function<void(bool connected)> task);

    /// The connection, for the loop thread; null while there is none.
    sd_bus* getSdBusHandle() const;

  private:
    class [[gnu::visibility("hidden")]] Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kaz::dbus
