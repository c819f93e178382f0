// Owners of what libsystemd and the kernel hand out, and what their interfaces need.
#pragma once

#include <unistd.h>

#include <utility>

#include "base/sd_bus/handles.h"

namespace kaz::dbus {

class Fd {
  public:
    Fd() = default;
    explicit Fd(int fd) noexcept : fd_(fd) {}
    Fd(Fd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Fd& operator=(Fd&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }

    int get() const noexcept { return fd_; }
    explicit operator bool() const noexcept { return fd_ >= 0; }

  private:
    int fd_ = -1;
};

// C interfaces say null where they have no text.
inline const char* textOf(const char* text) noexcept {
    return text == nullptr ? "" : text;
}

// Passes the result of a libsystemd call on; throws std::system_error when it is a negated errno.
int checked(int result, const char* call);

}  // namespace kaz::dbus
