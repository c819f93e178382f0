// A session follows one wifi::Manager, and finds out when a request has been carried out.
//
// Requests of the library return nothing, and ~Manager drops requests that have not begun. So a command that
// exits right after its request would sometimes do nothing. carriedOut() waits for the answer to Follower::ask(), which
// also tells what failed. ~Manager then publishes and saves what is pending.
#pragma once

#include <wifi/client/follower.h>

#include <chrono>
#include <functional>
#include <utility>

#include "base/non_copyable.h"
#include "kazwifictl/process/caught_signals.h"
#include "kazwifictl/session/snapshot.h"

namespace kaz::ctl {

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

    // Makes a Manager whose threads block all signals, so that signals reach the calling thread. `interrupts` must
    // outlive the session.
    explicit Session(Interrupts& interrupts);

    // Must not be called after close().
    wifi::Manager& manager() { return follower_.manager(); }

    // The state after the changes taken so far.
    const Snapshot& latest() const { return latest_; }

    // Waits for a change until `deadline`, and takes it. False at the deadline, and when the reader is gone.
    bool next(Clock::time_point deadline, const Observer& observer = {});

    // Takes changes until `done` returns true. Checks it before the first change too. False at the deadline.
    bool until(Clock::time_point deadline, const Condition& done, const Observer& observer = {});

    // Lets next() and until() return when nobody reads from `out` any more, a pipe for example.
    void watchReaderOf(int out) { reader_ = out; }
    bool readerGone() const { return readerGone_; }

    // Takes the changes that have arrived, without waiting. Call it when fd() is readable.
    void takeAll(const Observer& observer = {});
    int fd() const { return follower_.fd(); }

    // Finds out whether the supplicant runs, and takes the whole first state. If Wi-Fi is switched on but the supplicant
    // does not run, waits until `limit` for it if `patient`. Returns noAnswer if the system does not report its state
    // within `limit`, or within 5 s if that is longer. This and carriedOut() call `slow` after a second of waiting.
    Start start(std::chrono::milliseconds limit, bool patient, const std::function<void()>& slow = {});

    // Longer than a D-Bus call, which times out after 10 s.
    static constexpr std::chrono::milliseconds requestLimit{15000};
    // Waits until every request made so far has been carried out. False on timeout.
    bool carriedOut(std::chrono::milliseconds limit, const Observer& observer = {});

    using Failures = wifi::RequestFailures;
    // What carriedOut() was told since the last call of this.
    Failures takeFailures() { return std::exchange(failures_, {}); }

    // Ends the Manager and takes the last changes.
    void close();

  private:
    bool deliverNext(const Observer& observer);
    // until(), and calls slow_ after a second.
    bool untilSlowly(Clock::time_point deadline, const Condition& done, const Observer& observer);

    Interrupts& interrupts_;
    Snapshot latest_;
    Failures failures_;
    std::function<void()> slow_;
    int reader_ = -1;
    bool readerGone_ = false;
    wifi::client::Follower follower_;
};

}  // namespace kaz::ctl
