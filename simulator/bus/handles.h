#pragma once

#include "base/checked.h"
#include "base/sd_bus/handles.h"

#include <string>

namespace kaz::sim {

using Bus = dbus::BusPtr;
using Message = dbus::MessagePtr;
using Slot = dbus::SlotPtr;
using Event = dbus::EventPtr;
using EventSource = dbus::SourcePtr;

inline Message share(sd_bus_message* message) {
    return Message(sd_bus_message_ref(message));
}

inline Message newSignal(sd_bus* bus, const std::string& path, const std::string& interface,
                         const char* member) {
    Message signal;
    checked(sd_bus_message_new_signal(bus, dbus::out(signal), path.c_str(), interface.c_str(), member),
            "new signal");
    return signal;
}

}  // namespace kaz::sim
