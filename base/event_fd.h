#pragma once

#include "base/file_descriptor.h"

namespace kaz {

// A file descriptor that wakes a thread from poll(): readable from set() to clear(). Usable from any thread.
class EventFd {
  public:
    // Throws std::system_error.
    EventFd();

    void set() const noexcept;
    void clear() const noexcept;
    int get() const noexcept { return fd_.get(); }

  private:
    FileDescriptor fd_;
};

}  // namespace kaz
