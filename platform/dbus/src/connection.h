#pragma once

#include "handles.h"
#include "kill_switch.h"
#include "signal_table.h"

namespace kaz::dbus {

// The connection to the system bus, and the signal handlers on it. Belongs to the loop thread, but for
// abandon().
class Connection {
  public:
    Connection() = default;
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    Connection(Connection&&) = delete;
    Connection& operator=(Connection&&) = delete;

    // Connects, waits to be let in (10 s at most), subscribes the handlers. A failure is one error in the
    // log.
    void open(sd_event* event);

    // Sends what is still queued, then disconnects.
    void close() noexcept;

    // To be called after each turn of the loop. A connection that broke is given up here, not in the middle
    // of a task that still uses it, with one error in the log.
    void endTurn() noexcept;

    // Makes whatever this connection waits for fail now, and everything later. From any thread.
    void abandon() noexcept { killSwitch_.pull(); }

    sd_bus* bus() const noexcept { return bus_.get(); }
    SignalTable& signals() noexcept { return signals_; }

  private:
    int connect(sd_event* event);
    int waitToBeLetIn();
    void drop() noexcept;

    KillSwitch killSwitch_;
    BusPtr bus_;
    SignalTable signals_;
};

}  // namespace kaz::dbus
