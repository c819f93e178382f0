#pragma once

#include "dbus/remote_object.h"

#include <kaz/dbus/event_loop.h>
#include <kaz/dbus/opath.h>

#include <chrono>
#include <functional>
#include <optional>

namespace kaz::dbus {

// The connection to the system bus and the thread that works on it: the only class through which the library uses the
// platform's event loop.
//
// Tasks, signal handlers, the timer task and the idle task run on that thread, one at a time. start(), stop() and
// pushTask() may be called from any thread; everything else only before the start or on the loop thread.
//
// The destructor stops the thread and waits for it. What tasks and handlers use must live longer than the Bus.
class Bus {
  public:
    // How long a subscription lasts: until dropTemporarySubscriptions(), or as long as the Bus.
    enum class Lifetime { temporary, permanent };

    void start();
    void stop();

    // Queues a task; first in, first out.
    void pushTask(std::function<void()> task);

    // Runs when there is nothing else to do. It returns the delay after which it must run again even if nothing
    // happens.
    void setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task);

    // The one periodic timer.
    void configureTimer(bool enable, std::chrono::milliseconds interval);
    void setTimerTask(std::function<void()> task);

    // Calls the handler for each such signal of `sender`. An empty path subscribes to nothing.
    void subscribe(const char* sender, const OPath& path, const char* interface, const char* member,
                   Lifetime lifetime, std::function<void(MessageDecoder&)> handler);
    void dropTemporarySubscriptions();

    // Runs the task when the connection is lost (false), and when there is one again (true). One task at most.
    void onConnectionChanged(std::function<void(bool connected)> task);

    // Runs the task when the bus name gets another owner (true) or loses its owner (false). One task per name.
    void onOwnerChanged(const char* name, std::function<void(bool owned)> task);

    // One interface of one object, for calls on the loop thread. Valid until the connection changes.
    RemoteObject object(const char* destination, const OPath& path, const char* interface) const;

  private:
    EventLoop loop_;
};

}  // namespace kaz::dbus
