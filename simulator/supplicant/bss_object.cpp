#include "simulator/supplicant/bss_object.h"

#include "simulator/bus/vtable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kaz::sim {
namespace {

constexpr const char* bssInterface = "fi.w1.wpa_supplicant1.BSS";

struct SecurityElement {
    Words keyMgmt;
    Words pairwise;
    const char* group = nullptr;
    const char* mgmtGroup = nullptr;
};

Dictionary dictionary(const SecurityElement& element) {
    Dictionary entries = {{"KeyMgmt", element.keyMgmt}, {"Pairwise", element.pairwise}};
    if (element.group != nullptr) {
        entries.emplace_back("Group", element.group);
    }
    if (element.mgmtGroup != nullptr) {
        entries.emplace_back("MgmtGroup", element.mgmtGroup);
    }
    return entries;
}

SecurityElement wpaElement(Security security) {
    return security == Security::wpa ? SecurityElement{{"wpa-psk"}, {"tkip"}, "tkip"} : SecurityElement{};
}

SecurityElement rsnElement(Security security) {
    switch (security) {
        case Security::open:
        case Security::wep:
        case Security::wpa:
            return {};
        case Security::wpa2:
            return {{"wpa-psk"}, {"ccmp"}, "ccmp"};
        case Security::wpa2Wpa3:
            return {{"wpa-psk", "sae"}, {"ccmp"}, "ccmp", "aes128cmac"};
        case Security::wpa3:
            return {{"sae"}, {"ccmp"}, "ccmp", "aes128cmac"};
        case Security::eap:
            return {{"wpa-eap"}, {"ccmp"}, "ccmp"};
    }
    return {};
}

// The SSID and the supported rates.
Bytes elements(const std::string& ssid) {
    return Bytes(std::string{'\0', static_cast<char>(ssid.size())} + ssid +
                 "\x01\x08\x0c\x12\x18\x24\x30\x48\x60\x6c");
}

using vtable::property;

}  // namespace

const sd_bus_vtable BssObject::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    property("SSID", [](const BssObject& o) { return Bytes(o.bss_.ssid); }),
    property("BSSID", [](const BssObject& o) { return Bytes(bssidBytes(o.bss_.seen.bssid).value_or("")); }),
    property("Privacy", [](const BssObject& o) { return o.bss_.seen.security != Security::open; }),
    property("Mode", [](const BssObject&) { return "infrastructure"; }),
    property("Signal", [](const BssObject& o) { return o.bss_.seen.signal; }),
    property("Frequency", [](const BssObject& o) { return o.bss_.seen.frequency; }),
    property("Rates",
             [](const BssObject&) {
                 return std::vector<std::uint32_t>{54'000'000, 48'000'000, 36'000'000, 24'000'000,
                                                   18'000'000, 12'000'000, 9'000'000,  6'000'000};
             }),
    property("WPA", [](const BssObject& o) { return dictionary(wpaElement(o.bss_.seen.security)); }),
    property("RSN", [](const BssObject& o) { return dictionary(rsnElement(o.bss_.seen.security)); }),
    property("WPS", [](const BssObject&) { return Dictionary(); }),
    property("IEs", [](const BssObject& o) { return elements(o.bss_.ssid); }),
    property("Age",
             [](const BssObject& o) {
                 const auto age =
                     std::chrono::duration_cast<std::chrono::seconds>(o.scheduler_.now() - o.bss_.lastSeen);
                 return static_cast<std::uint32_t>(age.count());
             }),
    SD_BUS_SIGNAL("PropertiesChanged", "a{sv}", 0),
    SD_BUS_VTABLE_END,
};

BssObject::BssObject(Connection& connection, const Scheduler& scheduler, std::string path, const Bss& bss)
    : scheduler_(scheduler),
      bss_(bss),
      path_(std::move(path)),
      properties_(scheduler, {connection.bus(), path_, bssInterface, vtable_, this}, true),
      slot_(connection.serve(path_, bssInterface, vtable_, this)) {}

}  // namespace kaz::sim
