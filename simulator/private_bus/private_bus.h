#pragma once

#include <sys/types.h>

#include <string>

#include "base/non_copyable.h"
#include "base/temporary_folder.h"

namespace kaz::sim {

// A message bus of our own: a dbus-daemon with a socket in a new folder under $TMPDIR, on which everybody may
// own, send and receive everything. The daemon ends with this object, and also when this process dies.
class PrivateBus : NonCopyable {
  public:
    // Starts the daemon and waits until it listens. Throws std::runtime_error when it does not start.
    PrivateBus();
    ~PrivateBus();

    const std::string& address() const noexcept { return address_; }

    // Points DBUS_SYSTEM_BUS_ADDRESS of this process here, so that its "system bus" is this one.
    void becomeSystemBus() const;

    // Kills the daemon at once, as a crash would: every connection breaks.
    void kill();

    // Starts the daemon again under the same address after a kill().
    void restart();

  private:
    void start();

    TemporaryFolder folder_{"kaz-bus-"};
    std::string address_;
    pid_t daemon_ = -1;
};

}  // namespace kaz::sim
