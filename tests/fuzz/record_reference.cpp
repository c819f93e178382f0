#include "fuzz/record_reference.h"

#include <array>
#include <string_view>

namespace kaz::fuzz {
namespace {

struct Property {
    std::string_view key;
    std::string_view type;
};

constexpr std::array<Property, 30> properties{{
    {"ActiveState", "s"},
    {"OnlineState", "s"},
    {"Scanning", "b"},
    {"BSSs", "ao"},
    {"CurrentNetwork", "o"},
    {"CurrentBSS", "o"},
    {"State", "s"},
    {"DisconnectReason", "i"},
    {"Ifname", "s"},
    {"ssid", "s"},
    {"Signal", "n"},
    {"Privacy", "b"},
    {"SSID", "ay"},
    {"WPA", "a{sv}"},
    {"RSN", "a{sv}"},
    {"KeyMgmt", "as"},
    {"Group", "s"},
    {"rssi", "i"},
    {"state", "s"},  // keys are compared exactly
    {"", "i"},
    {"Frequency", "q"},
    {"BSSID", "ay"},
    {"Rates", "au"},
    {"Mode", "s"},
    {"linkspeed", "i"},
    {"AuthStatusCode", "i"},
    {"AssocStatusCode", "i"},
    {"CurrentAuthMode", "s"},
    {"SaePwe", "s"},
    {"Age", "u"},
}};

std::string usualText(FuzzedDataProvider& bytes) {
    static constexpr std::array texts{
        "active",         "inactive",        "failed",       "reloading",
        "online",         "offline",         "disconnected", "interface_disabled",
        "scanning",       "authenticating",  "associating",  "associated",
        "4way_handshake", "group_handshake", "completed",    "\"quoted\"",
        "486f6d65",       "wpa-psk",         "wpa-eap",      "2"};
    return bytes.PickValueInArray(texts);
}

Value makeEntry(FuzzedDataProvider& bytes, int depth);

// Dictionaries inside of dictionaries hold known keys, too.
Value makeUsual(FuzzedDataProvider& bytes, std::string_view type, int depth) {
    if (type == "a{sv}" && depth > 0) {
        Value dictionary;
        dictionary.signature = type;
        while (dictionary.contents.size() < 4 && bytes.remaining_bytes() > 0 && bytes.ConsumeBool()) {
            dictionary.contents.push_back(makeEntry(bytes, depth - 1));
        }
        return dictionary;
    }
    return type == "s" && bytes.ConsumeBool() ? textValue(usualText(bytes)) : makeValue(bytes, type);
}

Value makeEntry(FuzzedDataProvider& bytes, int depth) {
    const Property& property = bytes.PickValueInArray(properties);
    const bool odd = bytes.ConsumeIntegralInRange(0, 15) == 15;
    const std::string type = odd ? makeType(bytes) : std::string(property.type);
    Value entry;
    entry.signature = "{sv}";
    entry.contents.push_back(textValue(std::string(property.key)));
    entry.contents.push_back(variantOf(makeUsual(bytes, type, depth)));
    return entry;
}

}  // namespace

Value makeDictionary(FuzzedDataProvider& bytes) {
    // Sometimes another value instead, such as a dictionary of another type.
    return makeUsual(bytes, bytes.ConsumeIntegralInRange(0, 15) == 15 ? makeType(bytes) : "a{sv}", 2);
}

}  // namespace kaz::fuzz
