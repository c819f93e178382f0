#pragma once

#include <functional>
#include <memory>

#include "base/non_copyable.h"
#include "base/replaceable_task.h"
#include "platform/dbus/clock.h"
#include "platform/dbus/handles.h"
#include "platform/dbus/kill_switch.h"
#include "platform/dbus/signal_table.h"

namespace kaz::dbus {

// The connection to the system bus, and the signal handlers on it. Without a bus it tries again and again, with
// pauses that grow. Belongs to the loop thread, but for abandon().
class Connection : NonCopyable {
  public:
    using ChangeTask = std::function<void(bool connected)>;

    Connection() = default;
    ~Connection();

    // Connects, waits to be let in (10 s at most), subscribes the handlers. A failure is one error in the
    // log, however often it is repeated.
    void open(sd_event* event);

    // Sends what is still queued, then disconnects for good.
    void close() noexcept;

    // To be called after each turn of the loop. A connection that broke is given up here, not in the middle
    // of a task that still uses it, with one error in the log. True when that happened.
    bool endTurn() noexcept;

    // Runs after each loss of the connection and after each success but that of open().
    void setChangeTask(ChangeTask task);

    // Makes whatever this connection waits for fail now, and everything later. From any thread.
    void abandon() noexcept { killSwitch_.pull(); }

    sd_bus* bus() const noexcept { return bus_.get(); }
    SignalTable& signals() noexcept { return signals_; }

  private:
    static constexpr Clock::duration shortestPause = std::chrono::milliseconds(100);
    static constexpr Clock::duration longestPause = std::chrono::seconds(5);

    static int onRetry(sd_event_source* source, uint64_t due, void* connection);
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
    Clock::duration pause_ = shortestPause;
    SourcePtr retry_;
};

}  // namespace kaz::dbus
