#include "simulator/bus/vtable.h"
#include "simulator/supplicant/interface_object.h"
#include "simulator/supplicant/settings_message.h"

#include <cstdint>
#include <string>

namespace kaz::sim {
namespace {

using vtable::method;
using vtable::property;
using vtable::rawMethod;

template <typename Objects>
std::vector<ObjectPath> pathsOf(const Objects& objects) {
    std::vector<ObjectPath> paths;
    paths.reserve(objects.size());
    for (const auto& [id, object] : objects) {
        paths.emplace_back(object->path());
    }
    return paths;
}

Dictionary capabilities() {
    return {{"Pairwise", Words{"ccmp", "tkip"}},
            {"Group", Words{"ccmp", "tkip", "wep104", "wep40"}},
            {"GroupMgmt", Words{"aes128cmac"}},
            {"KeyMgmt", Words{"none", "ieee8021x", "wpa-eap", "wpa-psk", "sae"}},
            {"Protocol", Words{"rsn", "wpa"}},
            {"AuthAlg", Words{"open", "shared", "leap"}},
            {"Scan", Words{"active", "passive", "ssid"}},
            {"Modes", Words{"infrastructure"}},
            {"MaxScanSSID", std::int32_t{20}}};
}

}  // namespace

const sd_bus_vtable InterfaceObject::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    rawMethod("Scan", "a{sv}", "", [](InterfaceObject& o, sd_bus_message* call) { o.scan(call); }),
    method("SignalPoll", [](InterfaceObject& o) { return o.signalPoll(); }),
    method("Disconnect",
           [](InterfaceObject& o) {
               if (!o.station_.disconnect()) {
                   throw BusError("fi.w1.wpa_supplicant1.NotConnected", "This interface is not connected");
               }
           }),
    method("AddNetwork", [](InterfaceObject& o, const Settings& settings) { return o.addNetwork(settings); }),
    method("Reassociate", [](InterfaceObject& o) { o.station_.reassociate(); }),
    method("Reconnect", [](InterfaceObject& o) { o.station_.reconnect(); }),
    method("RemoveNetwork", [](InterfaceObject& o, const ObjectPath& n) { o.remove(o.networkAt(n)); }),
    method("RemoveAllNetworks", [](InterfaceObject& o) { o.removeAllNetworks(); }),
    method("SelectNetwork",
           [](InterfaceObject& o, const ObjectPath& n) { o.station_.select(o.networkAt(n)); }),
    method("FlushBSS",
           [](InterfaceObject& o, std::uint32_t age) { o.station_.flush(std::chrono::seconds(age)); }),
    method("SaveConfig", [](InterfaceObject& o) { o.saveConfig(); }),
    SD_BUS_SIGNAL("ScanDone", "b", 0),
    SD_BUS_SIGNAL("BSSAdded", "oa{sv}", 0),
    SD_BUS_SIGNAL("BSSRemoved", "o", 0),
    SD_BUS_SIGNAL("NetworkAdded", "oa{sv}", 0),
    SD_BUS_SIGNAL("NetworkRemoved", "o", 0),
    SD_BUS_SIGNAL("NetworkSelected", "o", 0),
    SD_BUS_SIGNAL("PropertiesChanged", "a{sv}", 0),
    SD_BUS_SIGNAL("EAP", "ss", 0),
    property("Capabilities", [](const InterfaceObject&) { return capabilities(); }),
    property("State", [](const InterfaceObject& o) { return std::string(toText(o.station_.state())); }),
    property("Scanning", [](const InterfaceObject& o) { return o.station_.scanning(); }),
    property("ApScan", [](const InterfaceObject&) { return std::uint32_t{1}; }),
    property("BSSExpireAge", [](const InterfaceObject&) { return std::uint32_t{180}; }),
    property("BSSExpireCount", [](const InterfaceObject&) { return std::uint32_t{2}; }),
    property(
        "Country", [](const InterfaceObject& o) { return o.storage_.config.country; },
        [](InterfaceObject& o, const std::string& country) {
            if (country.size() < 2) {
                throw BusError(SD_BUS_ERROR_FAILED, "invalid country code");
            }
            o.storage_.config.country = country.substr(0, 2);
        }),
    property("Ifname", [](const InterfaceObject&) { return "wlan0"; }),
    property("Driver", [](const InterfaceObject&) { return "nl80211"; }),
    property("ConfigFile", [](const InterfaceObject& o) { return o.storage_.file.string(); }),
    property("CurrentBSS",
             [](const InterfaceObject& o) {
                 const Bss* const bss = o.station_.currentBss();
                 return ObjectPath(bss == nullptr ? "/" : o.bssPath(bss->id));
             }),
    property("CurrentNetwork",
             [](const InterfaceObject& o) {
                 const Network* const network = o.station_.currentNetwork();
                 return ObjectPath(network == nullptr ? "/" : NetworkObject::pathOf(o.path_, network->id));
             }),
    property("CurrentAuthMode", [](const InterfaceObject& o) { return o.station_.authMode(); }),
    property("SaePwe", [](const InterfaceObject&) { return "0"; }),
    property("BSSs", [](const InterfaceObject& o) { return pathsOf(o.bssObjects_); }),
    property("Networks", [](const InterfaceObject& o) { return pathsOf(o.networkObjects_); }),
    property("ScanInterval",
             [](const InterfaceObject& o) {
                 const auto interval =
                     std::chrono::duration_cast<std::chrono::seconds>(o.neighbourhood_.times.scanInterval);
                 return static_cast<std::int32_t>(interval.count());
             }),
    property("DisconnectReason", [](const InterfaceObject& o) { return o.station_.disconnectReason(); }),
    property("AuthStatusCode", [](const InterfaceObject& o) { return o.station_.authStatusCode(); }),
    property(
        "UpdateConfig", [](const InterfaceObject& o) { return o.storage_.config.updateConfig ? "1" : "0"; },
        [](InterfaceObject& o, const std::string& text) { o.storage_.config.updateConfig = text == "1"; }),
    SD_BUS_VTABLE_END,
};

}  // namespace kaz::sim
