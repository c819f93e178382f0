#include "simulator/supplicant/bss_object.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "simulator/bus/vtable.h"

namespace kaz::sim {
namespace {

constexpr const char* bssInterface = "fi.w1.wpa_supplicant1.BSS";

void appendBytes(sd_bus_message* out, std::string_view bytes) {
    checked(sd_bus_message_append_array(out, 'y', bytes.data(), bytes.size()), "append bytes");
}

using Words = std::vector<const char*>;

void appendWords(sd_bus_message* out, const char* key, const Words& words) {
    checked(sd_bus_message_open_container(out, 'e', "sv"), "open entry");
    checked(sd_bus_message_append_basic(out, 's', key), "append key");
    checked(sd_bus_message_open_container(out, 'v', "as"), "open variant");
    checked(sd_bus_message_open_container(out, 'a', "s"), "open array");
    for (const char* const word : words) {
        checked(sd_bus_message_append_basic(out, 's', word), "append word");
    }
    checked(sd_bus_message_close_container(out), "close array");
    checked(sd_bus_message_close_container(out), "close variant");
    checked(sd_bus_message_close_container(out), "close entry");
}

struct SecurityElement {
    Words keyMgmt;
    Words pairwise;
    const char* group = nullptr;
    const char* mgmtGroup = nullptr;
};

void appendElement(sd_bus_message* out, const SecurityElement& element) {
    checked(sd_bus_message_open_container(out, 'a', "{sv}"), "open dictionary");
    appendWords(out, "KeyMgmt", element.keyMgmt);
    appendWords(out, "Pairwise", element.pairwise);
    if (element.group != nullptr) {
        checked(sd_bus_message_append(out, "{sv}", "Group", "s", element.group), "append group");
    }
    if (element.mgmtGroup != nullptr) {
        checked(sd_bus_message_append(out, "{sv}", "MgmtGroup", "s", element.mgmtGroup), "append mgmt group");
    }
    checked(sd_bus_message_close_container(out), "close dictionary");
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

}  // namespace

const sd_bus_vtable BssObject::vtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("SSID", "ay", vtable::get<&BssObject::ssid>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("BSSID", "ay", vtable::get<&BssObject::bssid>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Privacy", "b", vtable::get<&BssObject::privacy>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Mode", "s", vtable::get<&BssObject::mode>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Signal", "n", vtable::get<&BssObject::signal>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Frequency", "q", vtable::get<&BssObject::frequency>, 0,
                    SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Rates", "au", vtable::get<&BssObject::rates>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("WPA", "a{sv}", vtable::get<&BssObject::wpa>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("RSN", "a{sv}", vtable::get<&BssObject::rsn>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("WPS", "a{sv}", vtable::get<&BssObject::wps>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("IEs", "ay", vtable::get<&BssObject::elements>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_PROPERTY("Age", "u", vtable::get<&BssObject::age>, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE),
    SD_BUS_SIGNAL("PropertiesChanged", "a{sv}", 0),
    SD_BUS_VTABLE_END,
};

BssObject::BssObject(Connection& connection, const Scheduler& scheduler, std::string path, const Bss& bss)
    : scheduler_(scheduler),
      bss_(bss),
      path_(std::move(path)),
      properties_(scheduler, {connection.bus(), path_, bssInterface, vtable_, this}, true),
      slot_(connection.serve(path_, bssInterface, vtable_, this)) {}

void BssObject::ssid(sd_bus_message* out) const {
    appendBytes(out, bss_.ssid);
}

void BssObject::bssid(sd_bus_message* out) const {
    appendBytes(out, bssidBytes(bss_.seen.bssid).value_or(std::string()));
}

void BssObject::privacy(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "b", bss_.seen.security != Security::open ? 1 : 0), "append");
}

void BssObject::mode(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "s", "infrastructure"), "append");
}

void BssObject::signal(sd_bus_message* out) const {
    checked(sd_bus_message_append_basic(out, 'n', &bss_.seen.signal), "append");
}

void BssObject::frequency(sd_bus_message* out) const {
    checked(sd_bus_message_append_basic(out, 'q', &bss_.seen.frequency), "append");
}

void BssObject::rates(sd_bus_message* out) const {
    constexpr std::array<std::uint32_t, 8> rates = {54'000'000, 48'000'000, 36'000'000, 24'000'000,
                                                    18'000'000, 12'000'000, 9'000'000,  6'000'000};
    checked(sd_bus_message_append_array(out, 'u', rates.data(), sizeof rates), "append");
}

void BssObject::wpa(sd_bus_message* out) const {
    appendElement(out, wpaElement(bss_.seen.security));
}

void BssObject::rsn(sd_bus_message* out) const {
    appendElement(out, rsnElement(bss_.seen.security));
}

void BssObject::wps(sd_bus_message* out) const {
    checked(sd_bus_message_append(out, "a{sv}", 0), "append");
}

void BssObject::elements(sd_bus_message* out) const {
    std::string elements{'\0', static_cast<char>(bss_.ssid.size())};
    elements += bss_.ssid;
    elements += std::string_view("\x01\x08\x0c\x12\x18\x24\x30\x48\x60\x6c", 10);  // supported rates
    appendBytes(out, elements);
}

void BssObject::age(sd_bus_message* out) const {
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(scheduler_.now() - bss_.lastSeen);
    checked(sd_bus_message_append(out, "u", static_cast<std::uint32_t>(age.count())), "append");
}

}  // namespace kaz::sim
