#pragma once

#include <kaz/dbus/message.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace kaz::dbus {

/// One thread that owns one connection to the system bus and runs, one at a time: queued tasks (first in,
/// first out), handlers of bus signals, the task of one timer, and an idle task.
///
/// Tasks, signals and the timer take turns: neither endless tasks nor a storm of signals keeps the others from
/// running. The idle task runs when nothing else is ready, and when there is no such moment, 100 ms after the
/// event that called for it. The loop never wakes up without a cause.
///
/// An exception that leaves a task or handler is logged at error level; the loop goes on.
///
/// Without a bus, or when the bus goes away, the log gets one error; tasks, timer and idle task go on. The loop tries
/// to connect again after 100 ms, then after pauses that double up to 5 s, and sleeps meanwhile. On the new connection
/// all signal handlers are subscribed again.
///
/// pushTaskAsync and stopEventLoopAsync may be called from any thread. Everything else is to be called before
/// the start or on the loop thread.
class [[gnu::visibility("default")]] EventLoop {
  public:
    /// The connection is opened by the loop thread, before the first task runs. Throws std::system_error when no
    /// event, eventfd or timer can be had, as when the process has no descriptor left.
    EventLoop();

    /// Stops the loop if it runs and waits for its thread. 1000 ms after the stop was asked for, a bus call
    /// that is still waiting for its reply fails, and so does every call after it. Until this returns, the
    /// task in progress and the last idle pass may run. What they use must be alive, and lead here: mind that
    /// std::unique_ptr::reset() clears its pointer before it destroys. Must not run on the loop thread.
    ///
    /// In a child process that inherited the loop by fork() it does nothing: thread and connection are the
    /// parent's. The child must not use the loop otherwise.
    ~EventLoop();

    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    EventLoop(EventLoop &&) = delete;
    EventLoop& operator=(EventLoop&&) = delete;

    /// Starts the thread. Does nothing when it was started before, or stopped. Throws std::system_error when
    /// there can be no thread.
    void startEventLoopAsync();

    /// Asks the loop to finish and returns at once. The task or handler in progress ends, queued tasks are
    /// dropped (destroyed on the loop thread), and the idle task runs one last time. Asking again changes
    /// nothing; a loop stopped before its start never runs anything.
    void stopEventLoopAsync();

    /// After the stop, the task is dropped quietly. While 4096 tasks are waiting, it is dropped with a warning in the
    /// log, one until the queue is half empty again.
    void pushTaskAsync(std::function<void()> task);

    /// The idle task returns the delay after which it is to run again even if nothing happens; zero or less
    /// means at once, though no faster than every 10 ms when it says so each time. Without a delay it runs
    /// again only after something else did.
    void setIdleTaskSync(std::function<std::optional<std::chrono::milliseconds>()> task);

    /// Arms the timer, which then expires every `period` until it is disarmed; arming it again restarts the
    /// period. A period below 1 ms counts as 1 ms. Monotonic clock; expiries missed while a task ran long are
    /// not made up for.
    void configureTimerSync(bool enable, std::chrono::milliseconds period);
    /// What the timer runs; a task set later replaces it.
    void setTimerCompletedTask(std::function<void()> task);

    /// Subscribes to a signal. Only signals sent by the owner of the name `sender` reach the handler; the
    /// owner is followed when it changes. A temporary handler lives until removeTemporarySignalHandlersSync(),
    /// any other as long as the loop. An empty path is refused quietly. Handlers may add and remove handlers,
    /// themselves included; one that is added hears only later signals.
    void registerSignalHandlerSync(const char* sender, const char* path, const char* interface,
                                   const char* member, bool temporary,
                                   std::function<void(MessageDecoder&)> handler);
    /// Ends the subscriptions of all temporary handlers.
    void removeTemporarySignalHandlersSync();

    /// Runs the task when the connection is lost (false), and when there is one again or, after a start without
    /// a bus, at last (true). On the loop thread, outside of any other task or handler. A task set later replaces it.
    void setConnectionTaskSync(std::function<void(bool connected)> task);

    /// Runs the task when the bus name gets another owner (true) or loses its owner (false) while there is a
    /// connection; what happens while there is none is not told. One task a name, a later one replaces it.
    void setNameOwnerTaskSync(const char* name, std::function<void(bool owned)> task);

    /// The connection, for use on the loop thread; null while there is none.
    sd_bus* getSdBusHandle() const;

  private:
    class [[gnu::visibility("hidden")]] Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kaz::dbus
