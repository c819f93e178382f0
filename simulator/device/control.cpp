#include "simulator/device/control.h"

#include <cstdint>
#include <string>

#include "simulator/bus/vtable.h"
#include "simulator/device/control_json.h"
#include "simulator/device/device.h"
#include "simulator/world/neighbourhood_json.h"

namespace kaz::sim {
namespace {

constexpr const char* controlName = "com.kazwifi.Simulator1";
constexpr const char* controlPath = "/com/kazwifi/Simulator1";

template <typename T>
T read(sd_bus_message* call, char type) {
    T value{};
    checked(sd_bus_message_read_basic(call, type, &value), "read argument");
    return value;
}

std::string readText(sd_bus_message* call) {
    return read<const char*>(call, 's');
}

void checkKnown(bool known, const std::string& bssid) {
    if (!known) {
        throw BusError("com.kazwifi.Simulator1.UnknownAccessPoint", "there is no access point " + bssid);
    }
}

}  // namespace

const sd_bus_vtable Control::vtable_[] = {
    SD_BUS_VTABLE_START(SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("AddAccessPoint", "s", "s", vtable::method<&Control::addAccessPoint>, 0),
    SD_BUS_METHOD("RemoveAccessPoint", "s", "", vtable::method<&Control::removeAccessPoint>, 0),
    SD_BUS_METHOD("AlterAccessPoint", "ss", "", vtable::method<&Control::alterAccessPoint>, 0),
    SD_BUS_METHOD("SetSignal", "sn", "", vtable::method<&Control::setSignal>, 0),
    SD_BUS_METHOD("Deauthenticate", "i", "", vtable::method<&Control::deauthenticate>, 0),
    SD_BUS_METHOD("DropLink", "", "", vtable::method<&Control::dropLink>, 0),
    SD_BUS_METHOD("SetOnlineState", "s", "", vtable::method<&Control::setOnlineState>, 0),
    SD_BUS_METHOD("CrashSupplicant", "", "", vtable::method<&Control::crashSupplicant>, 0),
    SD_BUS_METHOD("RestartSupplicant", "", "", vtable::method<&Control::restartSupplicant>, 0),
    SD_BUS_METHOD("SetAutoRestart", "b", "", vtable::method<&Control::setAutoRestart>, 0),
    SD_BUS_METHOD("SetUnitState", "ss", "", vtable::method<&Control::setUnitState>, 0),
    SD_BUS_METHOD("Storm", "u", "", vtable::method<&Control::storm>, 0),
    SD_BUS_METHOD("OrderFault", "s", "u", vtable::method<&Control::orderFault>, 0),
    SD_BUS_METHOD("TimesFired", "u", "u", vtable::method<&Control::timesFired>, 0),
    SD_BUS_METHOD("ClearFaults", "", "", vtable::method<&Control::clearFaults>, 0),
    SD_BUS_METHOD("Calls", "", "s", vtable::method<&Control::calls>, 0),
    SD_BUS_METHOD("ForgetCalls", "", "", vtable::method<&Control::forgetCalls>, 0),
    SD_BUS_VTABLE_END,
};

Control::Control(const Environment& environment, Device& device)
    : device_(device),
      connection_(environment, ""),
      slot_(connection_.serve(controlPath, controlName, vtable_, this)) {
    connection_.own(controlName);
}

void Control::addAccessPoint(sd_bus_message* call) {
    const std::string bssid = device_.addAccessPoint(accessPointFromJson(readText(call)));
    reply(call, "s", bssid.c_str());
}

void Control::removeAccessPoint(sd_bus_message* call) {
    const std::string bssid = readText(call);
    checkKnown(device_.removeAccessPoint(bssid), bssid);
    reply(call, "");
}

void Control::alterAccessPoint(sd_bus_message* call) {
    const std::string bssid = readText(call);
    const std::string changes = readText(call);
    checkKnown(device_.alterAccessPoint(bssid, [&](AccessPoint& ap) { alterFromJson(ap, changes); }), bssid);
    reply(call, "");
}

void Control::setSignal(sd_bus_message* call) {
    const std::string bssid = readText(call);
    const auto signal = read<std::int16_t>(call, 'n');
    checkKnown(device_.alterAccessPoint(bssid, [signal](AccessPoint& ap) { ap.signal = signal; }), bssid);
    reply(call, "");
}

void Control::deauthenticate(sd_bus_message* call) {
    device_.deauthenticate(read<std::int32_t>(call, 'i'));
    reply(call, "");
}

void Control::dropLink(sd_bus_message* call) {
    device_.dropLink();
    reply(call, "");
}

void Control::setOnlineState(sd_bus_message* call) {
    device_.networkd().setOnlineState(readText(call));
    reply(call, "");
}

void Control::crashSupplicant(sd_bus_message* call) {
    device_.crashSupplicant();
    reply(call, "");
}

void Control::restartSupplicant(sd_bus_message* call) {
    device_.restartSupplicant();
    reply(call, "");
}

void Control::setAutoRestart(sd_bus_message* call) {
    device_.unit().setAutoRestart(read<int>(call, 'b') != 0);
    reply(call, "");
}

void Control::setUnitState(sd_bus_message* call) {
    const std::string active = readText(call);
    device_.unit().force({active, readText(call)});
    reply(call, "");
}

void Control::storm(sd_bus_message* call) {
    device_.storm(read<std::uint32_t>(call, 'u'));
    reply(call, "");
}

void Control::orderFault(sd_bus_message* call) {
    reply(call, "u", device_.faults().order(faultFromJson(readText(call))));
}

void Control::timesFired(sd_bus_message* call) {
    reply(call, "u", device_.faults().timesFired(read<std::uint32_t>(call, 'u')));
}

void Control::clearFaults(sd_bus_message* call) {
    device_.faults().clear();
    reply(call, "");
}

void Control::calls(sd_bus_message* call) {
    reply(call, "s", callsAsJson(device_.log().calls()).c_str());
}

void Control::forgetCalls(sd_bus_message* call) {
    device_.log().forget();
    reply(call, "");
}

}  // namespace kaz::sim
