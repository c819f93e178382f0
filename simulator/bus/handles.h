#pragma once

#include "base/checked.h"
#include "base/sd_bus/handles.h"

namespace kaz::sim {

using Bus = dbus::BusPtr;
using Message = dbus::MessagePtr;
using Slot = dbus::SlotPtr;
using Event = dbus::EventPtr;
using EventSource = dbus::SourcePtr;

inline Message share(sd_bus_message* message) {
    return Message(sd_bus_message_ref(message));
}

}  // namespace kaz::sim
