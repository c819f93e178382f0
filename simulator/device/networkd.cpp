#include "simulator/device/networkd.h"

#include "simulator/bus/vtable.h"

#include <utility>

namespace kaz::sim {
namespace {

constexpr const char* networkdName = "org.freedesktop.network1";
constexpr const char* networkdPath = "/org/freedesktop/network1";
constexpr const char* networkdInterface = "org.freedesktop.network1.Manager";

using vtable::property;

}  // namespace

const sd_bus_vtable Networkd::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    property("OperationalState",
             [](const Networkd& n) {
                 const char* const linkOnly = n.up_ ? "carrier" : "no-carrier";
                 return n.onlineState_ == "online" ? "routable" : linkOnly;
             }),
    property("CarrierState", [](const Networkd& n) { return n.up_ ? "carrier" : "no-carrier"; }),
    property("OnlineState", [](const Networkd& n) { return n.onlineState_; }),
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

}  // namespace kaz::sim
