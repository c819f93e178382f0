#pragma once

#include <sys/types.h>

#include <string>

namespace kaz::sim {

// A message bus of our own: a dbus-daemon with a socket in a new folder under $TMPDIR, on which everybody may
// own, send and receive everything. The daemon ends with this object, and also when this process dies.
class PrivateBus {
  public:
    // Starts the daemon and waits until it listens. Throws std::runtime_error when it does not start.
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    PrivateBus(PrivateBus&&) = delete;
    PrivateBus& operator=(PrivateBus&&) = delete;

    const std::string& address() const noexcept { return address_; }

    // Points DBUS_SYSTEM_BUS_ADDRESS of this process here, so that its "system bus" is this one.
    void becomeSystemBus() const;

    // Kills the daemon at once, as a crash would: every connection breaks.
    void kill();

    // Starts the daemon again under the same address after a kill().
    void restart();

  private:
    void start();
    void removeFolder() const noexcept;

    std::string folder_;
    std::string address_;
    pid_t daemon_ = -1;
};

}  // namespace kaz::sim
