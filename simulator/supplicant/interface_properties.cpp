#include <cstdint>
#include <string_view>

#include "simulator/bus/vtable.h"
#include "simulator/supplicant/interface_object.h"

namespace kaz::sim {
namespace {

void append(sd_bus_message* out, const char* types, const char* text) {
    checked(sd_bus_message_append(out, types, text), "append");
}

template <typename Objects>
void appendPaths(sd_bus_message* out, const Objects& objects) {
    checked(sd_bus_message_open_container(out, 'a', "o"), "open array");
    for (const auto& [id, object] : objects) {
        append(out, "o", object->path().c_str());
    }
    checked(sd_bus_message_close_container(out), "close array");
}

}  // namespace

void InterfaceObject::capabilities(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "a{sv}", 9,                                                       //
                                  "Pairwise", "as", 2, "ccmp", "tkip",                                   //
                                  "Group", "as", 4, "ccmp", "tkip", "wep104", "wep40",                   //
                                  "GroupMgmt", "as", 1, "aes128cmac",                                    //
                                  "KeyMgmt", "as", 5, "none", "ieee8021x", "wpa-eap", "wpa-psk", "sae",  //
                                  "Protocol", "as", 2, "rsn", "wpa",                                     //
                                  "AuthAlg", "as", 3, "open", "shared", "leap",                          //
                                  "Scan", "as", 3, "active", "passive", "ssid",                          //
                                  "Modes", "as", 1, "infrastructure",                                    //
                                  "MaxScanSSID", "i", 20),
            "append");
}

void InterfaceObject::state(sd_bus_message* out) const {
    append(out, "s", std::string(toText(station_.state())).c_str());
}

void InterfaceObject::scanning(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "b", station_.scanning() ? 1 : 0), "append");
}

void InterfaceObject::apScan(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "u", 1U), "append");
}

void InterfaceObject::bssExpireAge(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "u", 180U), "append");
}

void InterfaceObject::bssExpireCount(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "u", 2U), "append");
}

void InterfaceObject::country(sd_bus_message* out) const {
    append(out, "s", "");
}

void InterfaceObject::ifname(sd_bus_message* out) const {
    append(out, "s", "wlan0");
}

void InterfaceObject::driver(sd_bus_message* out) const {
    append(out, "s", "nl80211");
}

void InterfaceObject::configFile(sd_bus_message* out) const {
    append(out, "s", storage_.file.c_str());
}

void InterfaceObject::currentBss(sd_bus_message* out) const {
    const Bss* const bss = station_.currentBss();
    append(out, "o", bss == nullptr ? "/" : bssPath(bss->id).c_str());
}

void InterfaceObject::currentNetwork(sd_bus_message* out) const {
    const Network* const network = station_.currentNetwork();
    append(out, "o", network == nullptr ? "/" : NetworkObject::pathOf(path, network->id).c_str());
}

void InterfaceObject::currentAuthMode(sd_bus_message* out) const {
    append(out, "s", station_.authMode().c_str());
}

void InterfaceObject::bsss(sd_bus_message* out) const {
    appendPaths(out, bssObjects_);
}

void InterfaceObject::networkPaths(sd_bus_message* out) const {
    appendPaths(out, networkObjects_);
}

void InterfaceObject::scanInterval(sd_bus_message* out) const {
    const auto interval = std::chrono::duration_cast<std::chrono::seconds>(neighbourhood_.times.scanInterval);
    checked(sd_bus_message_append(out, "i", static_cast<std::int32_t>(interval.count())), "append");
}

void InterfaceObject::disconnectReason(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "i", std::int32_t{station_.disconnectReason()}), "append");
}

void InterfaceObject::authStatusCode(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "i", std::int32_t{station_.authStatusCode()}), "append");
}

void InterfaceObject::updateConfig(sd_bus_message* out) const {
    append(out, "s", storage_.config.updateConfig ? "1" : "0");
}

void InterfaceObject::setUpdateConfig(sd_bus_message* in) {
    const char* text = nullptr;
    checked(sd_bus_message_read(in, "s", &text), "read");
    storage_.config.updateConfig = std::string_view(text) == "1";
}

}  // namespace kaz::sim
