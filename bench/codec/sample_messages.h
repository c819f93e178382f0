#pragma once

#include "base/sd_bus/handles.h"

namespace kaz::bench {

using dbus::BusPtr;

// A connection that leads nowhere: enough to build messages.
BusPtr makeUnconnectedBus();

dbus::MessagePtr makeSignal(sd_bus* bus);

// The properties of an access point as the supplicant reports them, information elements included. Sealed.
dbus::MessagePtr makeBssProperties(sd_bus* bus);

// A PropertiesChanged of the supplicant's interface in the middle of a connect. Sealed.
dbus::MessagePtr makePropertiesChanged(sd_bus* bus);

}  // namespace kaz::bench
