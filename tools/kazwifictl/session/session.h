// A session uses one wifi::Manager, and finds out when a request has been carried out.
//
// Requests of the library return nothing, and ~Manager drops requests that have not begun. So a command that
// exits right after its request would sometimes do nothing. A command can rely on three facts of the library's
// contract, none of which depends on timing:
//
//  1. Requests become tasks. Tasks run in the order of the requests, on the thread that also runs the
//     callbacks. So the effect of a later request proves that all earlier requests have ended.
//  2. Three requests publish the new state of the connection from inside their task: to connect, to disconnect,
//     and to forget the network in use. So this event proves that the task has begun.
//  3. ~Manager waits for the task or pass in progress, then publishes and saves what is pending. So once a
//     request has begun, close() completes it. Once the Manager is attached to a supplicant, close() completes
//     the first state.
//
// Some requests have no effect that shows, for example to forget a network that is out of range. Then fence()
// makes an effect: it requests a connection to a saved network whose name is too long to exist. The library
// announces every such attempt (fact 2) before it looks for the network. It finds none and leaves the supplicant
// alone. The attempt exists only in this Manager and ends with it. But it replaces the connection in this
// Manager's state. So fence() must be the last request of a session, or be called while nothing is connected.
#pragma once

#include <wifi/manager.h>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/event_fd.h"
#include "base/non_copyable.h"
#include "kazwifictl/process/caught_signals.h"
#include "kazwifictl/session/snapshot.h"

namespace kaz::ctl {

// Makes a Manager whose threads block all signals, so that signals reach the calling thread.
std::unique_ptr<wifi::Manager> makeManager();

// The operations that wait throw Interrupted on a signal.
class Session : NonCopyable {
  public:
    enum class Start {
        running,     // the Manager is attached to a running supplicant
        notRunning,  // it does not run, or Wi-Fi cannot be controlled
        noAnswer,    // the state of the system could not be read in time
    };
    // Called for each change that is taken, with the snapshots before and after it.
    using Observer = std::function<void(const Snapshot& before, const Snapshot& now)>;
    using Condition = std::function<bool(const Snapshot&)>;

    // Makes a Manager and registers the callbacks. `interrupts` must outlive the session.
    explicit Session(Interrupts& interrupts);

    // Must not be called after close().
    wifi::Manager& manager() { return *manager_; }

    // The state after the changes taken so far.
    const Snapshot& latest() const { return latest_; }

    // Waits for a change until `deadline`, and takes it. False at the deadline.
    bool next(Clock::time_point deadline, const Observer& observer = {});

    // Takes changes until `done` returns true. Checks it before the first change too. False at the deadline.
    bool until(Clock::time_point deadline, const Condition& done, const Observer& observer = {});

    // The first state arrives in a few changes. After this time without a change, it is complete, unless the library
    // is very busy.
    static constexpr std::chrono::milliseconds firstStateLimit{150};

    // Takes the changes that have arrived, without waiting. Call it when fd() is readable.
    void takeAll(const Observer& observer = {});
    int fd() const { return arrived_.get(); }

    // Finds out whether the supplicant runs. Returns as soon as the Manager is attached to it. If Wi-Fi is switched on
    // but the supplicant does not run, waits until `limit` for it if `patient`. Returns noAnswer if the system does not
    // report its state within `limit`, or within 5 s if that is longer.
    Start start(std::chrono::milliseconds limit, bool patient);

    // Longer than a D-Bus call, which times out after 10 s.
    static constexpr std::chrono::milliseconds requestLimit{15000};
    // Waits until every request made so far has been carried out. False on timeout.
    bool fence(std::chrono::milliseconds limit, const Observer& observer = {});

    // Ends the Manager (fact 3) and takes the last changes.
    void close();

  private:
    bool untilRunning(Clock::time_point deadline);
    void push(Snapshot snapshot);
    std::optional<Snapshot> pop();
    void deliver(Snapshot now, const Observer& observer);
    void takeFenceOut(wifi::ConnectionInfo& info);

    Interrupts& interrupts_;
    Snapshot latest_;
    unsigned fences_ = 0;
    std::string reached_;  // the last fence seen
    std::mutex mutex_;     // guards arrivals_
    std::deque<Snapshot> arrivals_;
    EventFd arrived_;
    std::unique_ptr<wifi::Manager> manager_;  // destroyed first, because its thread calls push()
};

}  // namespace kaz::ctl
