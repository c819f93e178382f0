#pragma once

#include <kaz/dbus/message.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace kaz::dbus {

// One thread that owns one connection to the system bus and runs, one at a time: queued tasks (first in,
// first out), handlers of bus signals, the task of one timer, and an idle task.
//
// Tasks, signals and the timer take turns: neither endless tasks nor a storm of signals keeps the others from
// running. The idle task runs when nothing else is ready. The loop never wakes up without a cause.
//
// An exception that leaves a task or handler is logged at error level; the loop goes on.
//
// pushTaskAsync and stopEventLoopAsync may be called from any thread. Everything else is to be called before
// the start or on the loop thread.
class [[gnu::visibility("default")]] EventLoop {
  public:
    // The connection is opened by the loop thread, before the first task runs.
    EventLoop();

    // Stops the loop if it runs and waits for its thread. 1000 ms after the stop was asked for, a bus call
    // that is still waiting for its reply fails, and so does every call after it. Must not run on the loop
    // thread.
    ~EventLoop();

    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    EventLoop(EventLoop &&) = delete;
    EventLoop& operator=(EventLoop&&) = delete;

    // Starts the thread. Does nothing when it was started before, or stopped. Throws std::system_error when
    // there can be no thread.
    void startEventLoopAsync();

    // Asks the loop to finish and returns at once. The task or handler in progress ends, queued tasks are
    // dropped (destroyed on the loop thread), and the idle task runs one last time. Asking again changes
    // nothing; a loop stopped before its start never runs anything.
    void stopEventLoopAsync();

    void pushTaskAsync(std::function<void()> task);

    // The idle task returns the delay after which it is to run again even if nothing happens; zero or less
    // means at once. Without a delay it runs again only after something else did.
    void setIdleTaskSync(std::function<std::optional<std::chrono::milliseconds>()> task);

    // Arms the timer, which then expires every `period` until it is disarmed; arming it again restarts the
    // period. Monotonic clock.
    void configureTimerSync(bool enable, std::chrono::milliseconds period);
    void setTimerCompletedTask(std::function<void()> task);

    // Subscribes to a signal. Only signals sent by the owner of the name `sender` reach the handler; the
    // owner is followed when it changes. A temporary handler lives until removeTemporarySignalHandlersSync(),
    // any other as long as the loop. An empty path is refused quietly. Handlers may add and remove handlers,
    // themselves included.
    void registerSignalHandlerSync(const char* sender, const char* path, const char* interface,
                                   const char* member, bool temporary,
                                   std::function<void(MessageDecoder&)> handler);
    void removeTemporarySignalHandlersSync();

    // The connection, for use on the loop thread; null while there is none.
    sd_bus* getSdBusHandle() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kaz::dbus
