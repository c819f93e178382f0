#pragma once

#include <kaz/dbus/message.h>
#include <systemd/sd-bus.h>

#include <memory>

namespace kaz::bench {

struct BusUnref {
    void operator()(sd_bus* bus) const noexcept { sd_bus_close_unref(bus); }
};
using BusPtr = std::unique_ptr<sd_bus, BusUnref>;

// A connection that leads nowhere: enough to build messages.
BusPtr makeUnconnectedBus();

dbus::MessagePtr makeSignal(sd_bus* bus);

// The properties of an access point as the supplicant reports them, information elements included. Sealed.
dbus::MessagePtr makeBssProperties(sd_bus* bus);

// A PropertiesChanged of the supplicant's interface in the middle of a connect. Sealed.
dbus::MessagePtr makePropertiesChanged(sd_bus* bus);

}  // namespace kaz::bench
