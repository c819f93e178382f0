#include "simulator/device/control.h"

#include "simulator/bus/vtable.h"
#include "simulator/device/control_json.h"
#include "simulator/device/device.h"
#include "simulator/world/neighbourhood_json.h"

#include <cstdint>
#include <string>

namespace kaz::sim {
namespace {

constexpr const char* controlName = "com.kazwifi.Simulator1";
constexpr const char* controlPath = "/com/kazwifi/Simulator1";

void checkKnown(bool known, const std::string& bssid) {
    if (!known) {
        throw BusError("com.kazwifi.Simulator1.UnknownAccessPoint", "there is no access point " + bssid);
    }
}

using vtable::method;

}  // namespace

const sd_bus_vtable Control::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    method("AddAccessPoint",
           [](Control& c, const std::string& json) {
               return c.device_.addAccessPoint(accessPointFromJson(json));
           }),
    method(
        "RemoveAccessPoint",
        [](Control& c, const std::string& bssid) { checkKnown(c.device_.removeAccessPoint(bssid), bssid); }),
    method("AlterAccessPoint",
           [](Control& c, const std::string& bssid, const std::string& changes) {
               const auto alter = [&](AccessPoint& accessPoint) { alterFromJson(accessPoint, changes); };
               checkKnown(c.device_.alterAccessPoint(bssid, alter), bssid);
           }),
    method("SetSignal", [](Control& c, const std::string& bssid,
                           std::int16_t dBm) { checkKnown(c.device_.setSignal(bssid, dBm), bssid); }),
    method("Deauthenticate", [](Control& c, std::int32_t reason) { c.device_.deauthenticate(reason); }),
    method("DropLink", [](Control& c) { c.device_.dropLink(); }),
    method("SetOnlineState", [](Control& c, const std::string& state) { c.device_.setOnlineState(state); }),
    method("CrashSupplicant", [](Control& c) { c.device_.crashSupplicant(); }),
    method("RestartSupplicant", [](Control& c) { c.device_.restartSupplicant(); }),
    method("SetAutoRestart", [](Control& c, bool restart) { c.device_.setAutoRestart(restart); }),
    method("SetUnitState", [](Control& c, const std::string& active,
                              const std::string& sub) { c.device_.setUnitState(active, sub); }),
    method("RemoveInterface", [](Control& c) { c.device_.removeInterface(); }),
    method("AddInterface", [](Control& c) { c.device_.addInterface(); }),
    method("RemoveOtherInterface", [](Control& c) { c.device_.removeOtherInterface(); }),
    method("AddOtherInterface", [](Control& c) { c.device_.addOtherInterface(); }),
    method("SelectNetwork",
           [](Control& c, const std::string& ssid) {
               if (!c.device_.selectNetwork(ssid)) {
                   throw BusError("com.kazwifi.Simulator1.UnknownNetwork", "no network is configured for it");
               }
           }),
    method("Storm", [](Control& c, std::uint32_t signals) { c.device_.storm(signals); }),
    method("OrderFault",
           [](Control& c, const std::string& json) { return c.device_.orderFault(faultFromJson(json)); }),
    method("TimesFired", [](Control& c, std::uint32_t id) { return c.device_.timesFired(id); }),
    method("ClearFaults", [](Control& c) { c.device_.clearFaults(); }),
    method("Calls", [](Control& c) { return callsAsJson(c.device_.log().entries()); }),
    method("ForgetCalls", [](Control& c) { c.device_.log().take(); }),
    SD_BUS_VTABLE_END,
};

Control::Control(const Environment& environment, Device& device)
    : device_(device),
      connection_(environment, ""),
      slot_(connection_.serve(controlPath, controlName, vtable_, this)) {
    connection_.own(controlName);
}

}  // namespace kaz::sim
