// The same decoding, written by hand over sd-bus: the reference for the codec. Only for valid messages.
#pragma once

#include "dbus/records.h"

#include <systemd/sd-bus.h>

namespace kaz::bench {

// Negative on any failure.
int readBssByHand(sd_bus_message* message, wifi::BSSData& bss);
int readPropertiesChangedByHand(sd_bus_message* message, dbus::SupplicantInterfaceProperties& properties);
int writeNetworkByHand(sd_bus_message* message);

}  // namespace kaz::bench
