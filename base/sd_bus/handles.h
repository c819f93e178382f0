// Owners of libsystemd's objects. Each releases its one reference.
#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <memory>
#include <string>

#include "base/checked.h"
#include "base/non_copyable.h"

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
using BusReference = std::unique_ptr<sd_bus, Release<&sd_bus_unref>>;  // of a bus that another owner closes
using SlotPtr = std::unique_ptr<sd_bus_slot, Release<&sd_bus_slot_unref>>;
using MessagePtr = std::unique_ptr<sd_bus_message, Release<&sd_bus_message_unref>>;

// Passes an owner to a function that returns an object through a pointer: sd_bus_new(out(bus)).
template <typename Object, typename Releaser>
class Out : NonCopyable {
  public:
    explicit Out(std::unique_ptr<Object, Releaser>& owner) noexcept : owner_(owner) {}
    ~Out() { owner_.reset(object_); }

    operator Object**() noexcept { return &object_; }  // NOLINT(google-explicit-constructor): as an argument

  private:
    std::unique_ptr<Object, Releaser>& owner_;
    Object* object_ = nullptr;
};

template <typename Object, typename Releaser>
Out<Object, Releaser> out(std::unique_ptr<Object, Releaser>& owner) noexcept {
    return Out<Object, Releaser>(owner);
}

// The error of a failed call.
struct BusError : NonCopyable {
    BusError() = default;
    ~BusError() { sd_bus_error_free(&value); }

    sd_bus_error value{};
};

// Connects to the bus at this address. Throws std::system_error.
inline BusPtr connectTo(const std::string& address) {
    BusPtr bus;
    checked(sd_bus_new(out(bus)), "sd_bus_new");
    checked(sd_bus_set_address(bus.get(), address.c_str()), "sd_bus_set_address");
    checked(sd_bus_set_bus_client(bus.get(), 1), "sd_bus_set_bus_client");
    checked(sd_bus_start(bus.get()), "cannot connect to the bus");
    return bus;
}

}  // namespace kaz::dbus
