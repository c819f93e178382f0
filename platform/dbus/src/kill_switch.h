#pragma once

#include <mutex>

#include "base/file_descriptor.h"

namespace kaz::dbus {

// Lets another thread break the connection on which the loop thread may be blocked. A wait on the socket
// fails at once, and so does every later use. Usable from any thread.
class KillSwitch {
  public:
    // Sets the socket to break, and breaks it at once if that was requested before. Returns 0, or a negative
    // error code on failure.
    int guard(int socket) noexcept;
    void release() noexcept;

    void pull() noexcept;
    bool pulled() const noexcept;

  private:
    mutable std::mutex mutex_;
    FileDescriptor socket_;  // a duplicate, so that its number is not reused while another thread uses it
    bool pulled_ = false;
};

}  // namespace kaz::dbus
