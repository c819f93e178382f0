#pragma once

#include <mutex>

#include "base/file_descriptor.h"

namespace kaz::dbus {

// Lets another thread break the connection on which the loop thread may be blocked: whatever waits for the
// socket fails at once, and so does every later use of it. May be used from any thread.
class KillSwitch {
  public:
    // The socket to break. When the switch was thrown before, it is broken at once. Gives 0, or a negative error code
    // when it cannot be guarded.
    int guard(int socket) noexcept;
    void release() noexcept;

    void pull() noexcept;
    bool pulled() const noexcept;

  private:
    mutable std::mutex mutex_;
    FileDescriptor socket_;  // a duplicate, so that its number cannot be reused while another thread holds it
    bool pulled_ = false;
};

}  // namespace kaz::dbus
