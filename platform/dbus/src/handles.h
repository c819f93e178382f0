// Owners of what libsystemd and the kernel hand out.
#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#include <memory>
#include <utility>

namespace kaz::dbus {

template <auto release>
struct Release {
    template <typename Object>
    void operator()(Object* object) const noexcept {
        release(object);
    }
};

using EventPtr = std::unique_ptr<sd_event, Release<&sd_event_unref>>;
using SourcePtr = std::unique_ptr<sd_event_source, Release<&sd_event_source_disable_unref>>;
using BusPtr = std::unique_ptr<sd_bus, Release<&sd_bus_close_unref>>;
using SlotPtr = std::unique_ptr<sd_bus_slot, Release<&sd_bus_slot_unref>>;

// An error as calls report it.
struct BusError {
    BusError() = default;
    ~BusError() { sd_bus_error_free(&value); }
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    BusError(BusError&&) = delete;
    BusError& operator=(BusError&&) = delete;

    sd_bus_error value{};
};

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
