#include "simulator/device/networkd.h"

#include <utility>

#include "simulator/bus/vtable.h"

namespace kaz::sim {
namespace {

constexpr const char* networkdName = "org.freedesktop.network1";
constexpr const char* networkdPath = "/org/freedesktop/network1";
constexpr const char* networkdInterface = "org.freedesktop.network1.Manager";

}  // namespace

const sd_bus_vtable Networkd::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("OperationalState", "s", vtable::get<&Networkd::operationalState>, 0, vtable::emits),
    SD_BUS_PROPERTY("CarrierState", "s", vtable::get<&Networkd::carrierState>, 0, vtable::emits),
    SD_BUS_PROPERTY("OnlineState", "s", vtable::get<&Networkd::appendOnlineState>, 0, vtable::emits),
    SD_BUS_VTABLE_END,
};

Networkd::Networkd(const Environment& environment, const Times& times)
    : environment_(environment),
      times_(times),
      connection_(environment, "networkd"),
      signals_(environment.scheduler, {connection_.bus(), networkdPath, networkdInterface, vtable_, this},
               false),
      slot_(connection_.serve(networkdPath, networkdInterface, vtable_, this)) {
    connection_.own(networkdName);
}

void Networkd::linkIs(bool up) {
    if (std::exchange(up_, up) == up) {
        return;
    }
    signals_.changed("OperationalState");
    signals_.changed("CarrierState");
    if (up) {
        dhcp_ = environment_.scheduler.after(times_.dhcp, [this] { setOnlineState("online"); });
    } else {
        setOnlineState("offline");
    }
}

void Networkd::setOnlineState(const std::string& state) {
    dhcp_.cancel();
    if (std::exchange(onlineState_, state) != state) {
        signals_.changed("OnlineState");
        signals_.changed("OperationalState");
    }
}

void Networkd::appendOnlineState(sd_bus_message* out) const {
    checked(sd_bus_message_append_basic(out, 's', onlineState_.c_str()), "append");
}

void Networkd::operationalState(sd_bus_message* out) const {
    const char* const linkOnly = up_ ? "carrier" : "no-carrier";
    checked(sd_bus_message_append_basic(out, 's', onlineState_ == "online" ? "routable" : linkOnly),
            "append");
}

void Networkd::carrierState(sd_bus_message* out) const {
    checked(sd_bus_message_append_basic(out, 's', up_ ? "carrier" : "no-carrier"), "append");
}

}  // namespace kaz::sim
