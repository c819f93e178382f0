// Owners of libsystemd's objects. Each releases its one reference.
#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <memory>

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

// The error of a failed call.
struct BusError : NonCopyable {
    BusError() = default;
    ~BusError() { sd_bus_error_free(&value); }

    sd_bus_error value{};
};

}  // namespace kaz::dbus
