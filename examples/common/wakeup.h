#pragma once

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace example {

// Lets other threads wake a loop that waits for file descriptors. Several signals before the loop runs cause one
// wake-up.
class Wakeup {
  public:
    Wakeup() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (fd_ < 0) {
            throw std::system_error(errno, std::generic_category(), "eventfd");
        }
    }
    ~Wakeup() { close(fd_); }
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;
    Wakeup(Wakeup&&) = delete;
    Wakeup& operator=(Wakeup&&) = delete;

    // Readable after signal(), until clear().
    int fd() const { return fd_; }

    // Callable from any thread. It fails only when the counter is at its maximum, and then the loop is awake anyway.
    void signal() const { static_cast<void>(eventfd_write(fd_, 1)); }

    void clear() const {
        eventfd_t count = 0;
        static_cast<void>(eventfd_read(fd_, &count));
    }

  private:
    int fd_;
};

}  // namespace example
