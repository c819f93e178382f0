#include "fuzz/record_reference.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <utility>

namespace kaz::fuzz {
namespace {

// Stores the value of a key in a record. Returns false if the value has the wrong type.
template <typename Record>
using Take = bool (*)(Record& record, const std::string& key, const Value& value);

template <typename T>
bool fill(T& field, const Value& value) {
    std::optional<T> expected;
    expect(value, expected);
    if (expected) {
        field = std::move(*expected);
    }
    return expected.has_value();
}

template <typename Record>
std::optional<Record> expectRecord(const Value& value, Take<Record> take) {
    const Value& dictionary = bare(value);
    if (dictionary.type() != SD_BUS_TYPE_ARRAY) {
        return std::nullopt;
    }
    Record record{};
    for (const Value& entry : dictionary.contents) {
        if (entry.type() != SD_BUS_TYPE_DICT_ENTRY_BEGIN || entry.contents.front().signature != "s" ||
            !take(record, entry.contents.front().text, entry.contents.back())) {
            return std::nullopt;
        }
    }
    return record;
}

bool takeIntoWpa(wifi::WPA_RSN& record, const std::string& key, const Value& value) {
    if (key == "KeyMgmt") {
        return fill(record.keyMgmt, value);
    }
    return key != "Group" || fill(record.group, value);
}

bool fillWpa(wifi::WPA_RSN& field, const Value& value) {
    auto expected = expectRecord<wifi::WPA_RSN>(value, takeIntoWpa);
    if (expected) {
        field = std::move(*expected);
    }
    return expected.has_value();
}

bool takeIntoBss(wifi::BSSData& record, const std::string& key, const Value& value) {
    if (key == "Signal") {
        return fill(record.signal, value);
    }
    if (key == "Privacy") {
        return fill(record.privacy, value);
    }
    if (key == "SSID") {
        return fill(record.ssid, value);
    }
    if (key == "WPA") {
        return fillWpa(record.wpa, value);
    }
    return key != "RSN" || fillWpa(record.rsn, value);
}

bool takeIntoInterface(dbus::SupplicantInterfaceProperties& record, const std::string& key,
                       const Value& value) {
    if (key == "Scanning") {
        return fill(record.scanning, value);
    }
    if (key == "BSSs") {
        return fill(record.bsss, value);
    }
    if (key == "CurrentNetwork") {
        return fill(record.currentNetwork, value);
    }
    if (key == "CurrentBSS") {
        return fill(record.currentBss, value);
    }
    if (key == "State") {
        return fill(record.state, value);
    }
    return key != "DisconnectReason" || fill(record.disconnectReason, value);
}

auto fieldsOf(const wifi::WPA_RSN& record) {
    return std::tie(record.keyMgmt, record.group);
}

struct Property {
    std::string_view key;
    std::string_view type;
};

constexpr std::array<Property, 20> properties{{
    {"ActiveState", "s"},
    {"OnlineState", "s"},
    {"Scanning", "b"},
    {"BSSs", "ao"},
    {"CurrentNetwork", "o"},
    {"CurrentBSS", "o"},
    {"State", "s"},
    {"DisconnectReason", "i"},
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
}};

std::string usualText(FuzzedDataProvider& bytes) {
    static constexpr std::array texts{
        "active",         "inactive",           "failed",    "reloading",      "online",      "offline",
        "disconnected",   "interface_disabled", "scanning",  "authenticating", "associating", "associated",
        "4way_handshake", "group_handshake",    "completed", "\"quoted\"",     "486f6d65",    "wpa-psk",
        "wpa-eap"};
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

std::optional<wifi::SystemdUnitProperty> expectUnit(const Value& value) {
    using Record = wifi::SystemdUnitProperty;
    return expectRecord<Record>(value, [](Record& record, const std::string& key, const Value& property) {
        return key != "ActiveState" || fill(record.activeState, property);
    });
}

std::optional<wifi::ConfiguredSsid> expectConfiguredSsid(const Value& value) {
    using Record = wifi::ConfiguredSsid;
    return expectRecord<Record>(value, [](Record& record, const std::string& key, const Value& property) {
        return key != "ssid" || fill(record.ssid, property);
    });
}

std::optional<wifi::BSSData> expectBss(const Value& value) {
    return expectRecord<wifi::BSSData>(value, takeIntoBss);
}

std::optional<wifi::SignalPoll> expectSignalPoll(const Value& value) {
    using Record = wifi::SignalPoll;
    return expectRecord<Record>(value, [](Record& record, const std::string& key, const Value& property) {
        return key != "rssi" || fill(record.rssi, property);
    });
}

std::optional<dbus::NetworkdLinkProperties> expectLink(const Value& value) {
    using Record = dbus::NetworkdLinkProperties;
    return expectRecord<Record>(value, [](Record& record, const std::string& key, const Value& property) {
        return key != "OnlineState" || fill(record.onlineState, property);
    });
}

std::optional<dbus::SupplicantInterfaceProperties> expectInterface(const Value& value) {
    return expectRecord<dbus::SupplicantInterfaceProperties>(value, takeIntoInterface);
}

bool same(const wifi::SystemdUnitProperty& a, const wifi::SystemdUnitProperty& b) {
    return a.activeState == b.activeState;
}

bool same(const wifi::ConfiguredSsid& a, const wifi::ConfiguredSsid& b) {
    return a.ssid == b.ssid;
}

bool same(const wifi::BSSData& a, const wifi::BSSData& b) {
    return std::tie(a.signal, a.privacy, a.ssid) == std::tie(b.signal, b.privacy, b.ssid) &&
           fieldsOf(a.wpa) == fieldsOf(b.wpa) && fieldsOf(a.rsn) == fieldsOf(b.rsn);
}

bool same(const wifi::SignalPoll& a, const wifi::SignalPoll& b) {
    return a.rssi == b.rssi;
}

bool same(const dbus::NetworkdLinkProperties& a, const dbus::NetworkdLinkProperties& b) {
    return a.onlineState == b.onlineState;
}

bool same(const dbus::SupplicantInterfaceProperties& a, const dbus::SupplicantInterfaceProperties& b) {
    return std::tie(a.scanning, a.bsss, a.currentNetwork, a.currentBss, a.state, a.disconnectReason) ==
           std::tie(b.scanning, b.bsss, b.currentNetwork, b.currentBss, b.state, b.disconnectReason);
}

Value makeDictionary(FuzzedDataProvider& bytes) {
    // Sometimes another value instead, such as a dictionary of another type.
    return makeUsual(bytes, bytes.ConsumeIntegralInRange(0, 15) == 15 ? makeType(bytes) : "a{sv}", 2);
}

}  // namespace kaz::fuzz
