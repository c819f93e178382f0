// A stretch of work with a wifi::Manager, and the means to know when a request has been carried out.
//
// Requests of the library report nothing back, and ending a wifi::Manager drops those that have not begun. A
// command that returns early would therefore sometimes do nothing. These facts of the library's contract are
// what a command can rest on, all of them events:
//
//  1. Requests become tasks that run in the order in which they were made, and callbacks run on the same
//     thread as the tasks. So the effect of a later request proves that all earlier ones have ended.
//  2. Connecting, and disconnecting or forgetting the network in use, publish the new state of the connection
//     from inside the task. So that event proves that the task has begun.
//  3. Ending the Manager waits for the task or pass in progress, then publishes and saves what is due. So once
//     a request has begun, close() completes it; and once the supplicant is being followed, close() completes
//     the first state.
//
// Where a request shows no effect of its own, such as to forget a network that is out of range, fence() makes
// one: it asks for a saved network whose name is too long to exist. The library announces every such attempt
// (fact 2) before it looks for the network, finds none and leaves the supplicant alone. The attempt exists in
// this Manager only and ends with it. It does make this Manager's record of the connection useless, so a fence
// is the last thing that a session does, or stands where nothing is connected.
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

// A Manager whose threads leave all signals to the thread that calls this.
std::unique_ptr<wifi::Manager> makeManager();

class Session : NonCopyable {
  public:
    enum class Wake { change, timedOut, interrupted };
    enum class Start {
        running,     // the supplicant is being followed
        notRunning,  // it does not run, or Wi-Fi cannot be controlled
        noAnswer,    // the state of the system could not be read in time
        interrupted,
    };
    // Called for each change that is taken, with the snapshots before and after it.
    using Observer = std::function<void(const Snapshot& before, const Snapshot& now)>;
    using Condition = std::function<bool(const Snapshot&)>;

    // Makes a Manager and begins to follow it. `interrupts` outlives the session.
    explicit Session(Interrupts& interrupts);

    // Not after close().
    wifi::Manager& manager() { return *manager_; }

    // The state after the changes taken so far.
    const Snapshot& latest() const { return latest_; }

    // The signal that interrupted a wait.
    std::optional<int> signal() const { return signal_; }

    // Takes one change, waiting for it until `deadline`.
    Wake next(Clock::time_point deadline, const Observer& observer = {});

    // Takes changes until `done`; `change` when it is. It is asked before the first change, too.
    Wake until(Clock::time_point deadline, const Condition& done, const Observer& observer = {});

    // The first state arrives in a few pieces. A piece that comes later than this is a change.
    static constexpr std::chrono::milliseconds firstStateLimit{150};

    // Takes what has arrived, without waiting; to be called when fd() is readable.
    void takeAll(const Observer& observer = {});
    int fd() const { return arrived_.get(); }

    // Learns whether the supplicant runs. When it does not although Wi-Fi is switched on, `patient` waits for
    // it until the limit. Returns at once when it runs. The system may take as long to tell, and 5 s at least.
    Start start(std::chrono::milliseconds limit, bool patient);

    // A call on the bus may take 10 s before the library gives it up.
    static constexpr std::chrono::milliseconds requestLimit{15000};
    // Waits until every request made so far has been carried out.
    Wake fence(std::chrono::milliseconds limit, const Observer& observer = {});

    // Ends the Manager, see fact 3, and takes the last changes.
    void close();

  private:
    Wake untilRunning(Clock::time_point deadline);
    void push(Snapshot snapshot);
    std::optional<Snapshot> pop();
    void deliver(Snapshot now, const Observer& observer);
    void takeFenceOut(wifi::ConnectionInfo& info);

    Interrupts& interrupts_;
    Snapshot latest_;
    std::optional<int> signal_;
    unsigned fences_ = 0;
    std::string reached_;  // the last fence seen
    std::mutex mutex_;     // guards arrivals_
    std::deque<Snapshot> arrivals_;
    EventFd arrived_;
    std::unique_ptr<wifi::Manager> manager_;  // ends first: its thread calls push() until then
};

}  // namespace kaz::ctl
