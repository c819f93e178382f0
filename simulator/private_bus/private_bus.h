#pragma once

#include "base/non_copyable.h"

#include <memory>
#include <string>

namespace kaz::sim {

// A private message bus: a dbus-daemon with a socket in a new folder under $TMPDIR. Every client may own any
// name, and send and receive everything. The daemon ends with this object, and also when this process dies. One that has
// no client then is kept instead for the next bus of this process, because a start takes longer than many tests.
class PrivateBus : NonCopyable {
  public:
    // Starts the daemon and waits until it listens. Throws std::runtime_error when it does not start.
    PrivateBus();
    ~PrivateBus();

    const std::string& address() const noexcept;

    // Sets DBUS_SYSTEM_BUS_ADDRESS of this process to this bus.
    void becomeSystemBus() const;

    // Kills the daemon like a crash: every connection breaks.
    void kill();

    // Starts the daemon again under the same address after a kill().
    void restart();

  private:
    class Daemon;
    class Spare;

    static Spare& spare();

    std::unique_ptr<Daemon> daemon_;
};

}  // namespace kaz::sim
