// A stretch of work with the device, and the means to know when a request has been carried out.
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
// this device only and ends with it. It does make this device's record of the connection useless, so a fence
// is the last thing that a session does, or stands where nothing is connected.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "kazwifictl/process/caught_signals.h"
#include "kazwifictl/session/device.h"
#include "kazwifictl/session/event.h"
#include "kazwifictl/session/inbox.h"

namespace kaz::ctl {

class Session {
  public:
    enum class Wake { event, timedOut, interrupted };
    enum class Start {
        running,     // the supplicant is being followed
        notRunning,  // it does not run, or Wi-Fi cannot be controlled
        noAnswer,    // the state of the system could not be read in time
        interrupted,
    };
    using Observer = std::function<void(const Event&)>;
    using Condition = std::function<bool(const View&)>;

    // Makes a device and begins to follow it. `interrupts` outlives the session.
    Session(const DeviceFactory& make, Interrupts& interrupts);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    Session(Session&&) = delete;
    Session& operator=(Session&&) = delete;

    // Not after close().
    Device& device() { return *device_; }

    // The state after the events taken so far.
    const View& view() const { return view_; }

    // The signal that interrupted a wait.
    std::optional<int> signal() const { return signal_; }

    // Every event that is taken goes to the observer first. An empty function switches it off.
    void observe(Observer observer) { observer_ = std::move(observer); }

    // Takes one event, waiting for it until `deadline`.
    Wake next(Clock::time_point deadline);

    // Takes events until `done`; `event` when it is. It is asked before the first event, too.
    Wake until(Clock::time_point deadline, const Condition& done);

    // The first state arrives in a few pieces. A piece that comes later than this is a change.
    static constexpr std::chrono::milliseconds firstStateSettles{150};

    // Takes what has arrived, without waiting; to be called when fd() is readable.
    void takeAll();
    int fd() const { return inbox_.fd(); }

    // Learns whether the supplicant runs. When it does not although Wi-Fi is switched on, `patient` waits for
    // it until the limit. Returns at once when it runs. The system may take as long to tell, and 5 s at least.
    Start start(std::chrono::milliseconds limit, bool patient);

    // A call on the bus may take 10 s before the library gives it up.
    static constexpr std::chrono::milliseconds requestLimit{15000};
    // Waits until every request made so far has been carried out.
    Wake fence(std::chrono::milliseconds limit);

    // Ends the device, see fact 3, and takes the last events.
    void close();

  private:
    Wake untilRunning(Clock::time_point deadline);
    void deliver(Event event);
    bool withoutFence(Event& event);

    DeviceFactory make_;
    Interrupts& interrupts_;
    Inbox inbox_;
    View view_;
    Observer observer_;
    std::optional<int> signal_;
    unsigned fences_ = 0;
    std::string reached_;             // the last fence seen
    std::unique_ptr<Device> device_;  // ends first: it writes to the inbox until then
};

}  // namespace kaz::ctl
