// The same decoding, written out call by call over sd-bus: the limit the codec is measured against. Good
// messages only.
#pragma once

#include "dbus/records.h"

#include <systemd/sd-bus.h>

namespace kaz::bench {

// Below zero on any failure.
int readBssByHand(sd_bus_message* message, wifi::BSSData& bss);
int readPropertiesChangedByHand(sd_bus_message* message, dbus::SupplicantInterfaceProperties& properties);
int writeNetworkByHand(sd_bus_message* message);

}  // namespace kaz::bench
