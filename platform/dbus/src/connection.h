#pragma once

#include <functional>
#include <optional>

#include "base/non_copyable.h"
#include "base/replaceable_task.h"
#include "platform/dbus/clock.h"
#include "platform/dbus/handles.h"
#include "platform/dbus/kill_switch.h"
#include "platform/dbus/signal_table.h"

namespace kaz::dbus {

// The connection to the system bus, and its signal handlers. Without a bus it reconnects repeatedly, with
// growing pauses. For the loop thread only, except abandon().
class Connection : NonCopyable {
  public:
    using ChangeTask = std::function<void(bool connected)>;

    // The pauses before attempts to reconnect: each is twice as long as the last one, up to the longest.
    struct Pauses {
        Clock::duration shortest = std::chrono::milliseconds(100);
        Clock::duration longest = std::chrono::seconds(5);
    };

    Connection() : Connection(Pauses{}) {}
    explicit Connection(Pauses pauses) : pauses_(pauses) {}
    ~Connection();

    // Connects, waits until the bus accepts the connection (10 s at most), and subscribes the handlers.
    // Repeated failures are logged as one error.
    void open(sd_event* event) noexcept;

    // Sends queued messages, then disconnects for good.
    void close() noexcept;

    // Closes a broken connection and logs one error, or makes an attempt to reconnect that is due. Returns true if it
    // did either. Called after each turn of the loop, so that a task never loses the connection while it uses it.
    bool endTurn() noexcept;

    // Handles one message that was read ahead. Returns false if there is none, or the connection is broken.
    bool handleReadAhead() noexcept;

    // When the next attempt to reconnect is due: the loop must end a turn then. Not a timer of sd-event, because that may
    // fail to be created, and then there would be no further attempt.
    std::optional<Clock::time_point> retryAt() const noexcept { return retryAt_; }

    // Runs after each loss of the connection and after each connect, except in open().
    void setChangeTask(ChangeTask task);

    // Makes the current call and all later ones fail at once. Callable from any thread.
    void abandon() noexcept { killSwitch_.pull(); }

    sd_bus* bus() const noexcept { return bus_.get(); }
    SignalTable& signals() noexcept { return signals_; }

  private:
    int attempt() noexcept;
    int tryOpen();
    int connect();
    int waitToBeLetIn();
    void retryLater() noexcept;
    void retry() noexcept;
    void lose() noexcept;
    void drop() noexcept;
    void tellChange(bool connected) noexcept;

    sd_event* event_ = nullptr;
    KillSwitch killSwitch_;
    BusPtr bus_;
    SignalTable signals_;
    ReplaceableTask<void(bool connected)> changeTask_;
    Clock::time_point openedAt_;
    const Pauses pauses_;
    Clock::duration pause_ = pauses_.shortest;
    std::optional<Clock::time_point> retryAt_;
};

}  // namespace kaz::dbus
