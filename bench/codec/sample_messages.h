#pragma once

#include "base/sd_bus/handles.h"

namespace kaz::bench {

using dbus::BusPtr;

// A connection without a peer, for building messages.
BusPtr makeUnconnectedBus();

dbus::MessagePtr makeSignal(sd_bus* bus);

// The properties of an access point as the supplicant reports them, with information elements. Sealed.
dbus::MessagePtr makeBssProperties(sd_bus* bus);

// A PropertiesChanged of the supplicant's interface during a connect. Sealed.
dbus::MessagePtr makePropertiesChanged(sd_bus* bus);

}  // namespace kaz::bench
