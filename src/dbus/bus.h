#pragma once

#include "base/non_copyable.h"
#include "dbus/name_owners.h"
#include "dbus/remote_object.h"
#include "dbus/task_queue.h"

#include <kaz/dbus/event_loop.h>
#include <kaz/dbus/opath.h>
#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kaz::dbus {

// The connection to the system bus and the thread that works on it: the only class through which the library
// uses the platform's event loop.
//
// Tasks, signal handlers, the timer task and the idle task run on that thread, one at a time. start(), stop()
// and pushTask() may be called from any thread; everything else only before the start or on the loop thread.
//
// The destructor stops the thread and waits for it. What tasks and handlers use must live longer than the
// Bus.
class Bus : NonCopyable {
  public:
    // How long a subscription lasts: until dropTemporarySubscriptions(), or as long as the Bus.
    enum class Lifetime { temporary, permanent };

    static constexpr std::chrono::seconds defaultCallLimit{10};

    // A call fails when it has no reply after the limit.
    explicit Bus(std::chrono::milliseconds callLimit = defaultCallLimit);
    ~Bus();

    std::chrono::milliseconds callLimit() const { return callLimit_; }

    void start();
    // Drops waiting tasks. No task begins afterwards.
    void stop();

    // Queues a task; first in, first out. While TaskQueue::limit tasks wait, a further one is dropped with a
    // warning in the log.
    void pushTask(std::function<void()> task);

    // Sets the task that runs when there is nothing else to do. It returns the delay after which it must run
    // again without an event, or nullopt.
    void setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task);

    // The one periodic timer.
    void configureTimer(bool enable, std::chrono::milliseconds interval);
    void setTimerTask(std::function<void()> task);

    // Calls the handler for each such signal from the current owner of the name `sender`. A forged signal
    // from another program is dropped; so is every signal while the bus does not tell the owner. An empty path
    // subscribes to nothing.
    void subscribe(const char* sender, const OPath& path, const char* interface, const char* member,
                   Lifetime lifetime, std::function<void(MessageDecoder&)> handler);
    void dropTemporarySubscriptions();

    // Runs the task when the connection is lost (false) and when it is restored (true). One task at most. With a
    // platform that does not reconnect, neither is reported. A Bus with an idle task also reports a loss and a
    // restoration after signals were dropped because their owner was unknown: whatever the daemons said meanwhile
    // must be read again.
    void onConnectionChanged(std::function<void(bool connected)> task);

    // Runs the task when the bus name gets another owner (true) or loses its owner (false). One task per
    // name.
    void onOwnerChanged(const char* name, std::function<void(bool owned)> task);

    // Whether there is a connection.
    bool isConnected() { return connection() != nullptr; }

    // The unique name of the owner of this bus name; empty while there is none or it is unknown.
    const std::string& ownerOf(const char* name);

    // One interface of one object, for calls on the loop thread. Valid until the connection changes.
    RemoteObject object(const char* destination, const OPath& path, const char* interface,
                        CallRecord* record = nullptr);

  private:
    // Whether this is a forked child: it has the object but not the thread.
    bool inherited() const noexcept;
    sd_bus* connection();
    std::optional<std::chrono::milliseconds> recoverMissedSignals();
    void reportConnection(bool connected);

    const pid_t process_;
    const std::chrono::milliseconds callLimit_;
    std::atomic<bool> started_ = false;
    std::unique_ptr<NameOwners> owners_;
    std::function<void(bool connected)> connectionTask_;
    TaskQueue tasks_;
    EventLoop loop_;  // the last member, so that its thread ends before what it uses
};

}  // namespace kaz::dbus
