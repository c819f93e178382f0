#pragma once

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

#include <memory>
#include <string>
#include <system_error>

namespace kaz::sim {

struct Release {
    // At once, dropping what is still to be sent: the end of a connection is how a crash looks from outside.
    void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
    void operator()(sd_bus_slot* slot) const noexcept { sd_bus_slot_unref(slot); }
    void operator()(sd_event* event) const noexcept { sd_event_unref(event); }
    void operator()(sd_event_source* source) const noexcept { sd_event_source_disable_unref(source); }
};

template <typename T>
using Handle = std::unique_ptr<T, Release>;

using Bus = Handle<sd_bus>;
using Message = Handle<sd_bus_message>;
using Slot = Handle<sd_bus_slot>;
using Event = Handle<sd_event>;
using EventSource = Handle<sd_event_source>;

// Throws std::system_error for the negative errno that the sd-* functions return.
inline int check(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), what);
    }
    return result;
}

inline Message share(sd_bus_message* message) {
    return Message(sd_bus_message_ref(message));
}

}  // namespace kaz::sim
