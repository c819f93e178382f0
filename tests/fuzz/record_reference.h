// The expected records of property dictionaries, computed without sd-bus and without the decoder's tables.
#pragma once

#include "dbus/records.h"
#include "fuzz/dbus_value.h"
#include "fuzz/reference_reader.h"

#include <optional>
#include <tuple>
#include <utility>

namespace kaz::fuzz {

// The keys of a record, with their fields.
constexpr auto keysOf(const wifi::SystemdUnitProperty*) {
    return std::make_tuple(std::pair("ActiveState", &wifi::SystemdUnitProperty::activeState));
}
constexpr auto keysOf(const dbus::NetworkdLinkProperties*) {
    return std::make_tuple(std::pair("OnlineState", &dbus::NetworkdLinkProperties::onlineState));
}
constexpr auto keysOf(const wifi::ConfiguredSsid*) {
    return std::make_tuple(std::pair("ssid", &wifi::ConfiguredSsid::ssid));
}
constexpr auto keysOf(const wifi::SignalPoll*) {
    return std::make_tuple(std::pair("rssi", &wifi::SignalPoll::rssi),
                           std::pair("linkspeed", &wifi::SignalPoll::linkSpeed));
}
constexpr auto keysOf(const wifi::WPA_RSN*) {
    using Record = wifi::WPA_RSN;
    return std::make_tuple(std::pair("KeyMgmt", &Record::keyMgmt), std::pair("Group", &Record::group));
}
constexpr auto keysOf(const wifi::BSSData*) {
    using Record = wifi::BSSData;
    return std::make_tuple(std::pair("Signal", &Record::signal), std::pair("Privacy", &Record::privacy),
                           std::pair("SSID", &Record::ssid), std::pair("WPA", &Record::wpa),
                           std::pair("RSN", &Record::rsn), std::pair("BSSID", &Record::bssid),
                           std::pair("Frequency", &Record::frequency), std::pair("Rates", &Record::rates),
                           std::pair("Mode", &Record::mode));
}
constexpr auto keysOf(const dbus::SupplicantInterfaceProperties*) {
    using Record = dbus::SupplicantInterfaceProperties;
    return std::make_tuple(
        std::pair("Scanning", &Record::scanning), std::pair("BSSs", &Record::bsss),
        std::pair("CurrentNetwork", &Record::currentNetwork), std::pair("CurrentBSS", &Record::currentBss),
        std::pair("State", &Record::state), std::pair("DisconnectReason", &Record::disconnectReason),
        std::pair("Ifname", &Record::ifname), std::pair("AuthStatusCode", &Record::authStatusCode),
        std::pair("AssocStatusCode", &Record::assocStatusCode),
        std::pair("CurrentAuthMode", &Record::currentAuthMode), std::pair("SaePwe", &Record::saePwe));
}

template <typename T>
concept HasKeys = requires(const T* record) {
    keysOf(record);
};

// The value of a Lenient field: exactly its type in one variant, or nothing. It never fails.
template <typename T>
void expectLenient(const Value& variant, dbus::Lenient<T>& field) {
    std::optional<T> value;
    if (variant.contents.front().type() != SD_BUS_TYPE_VARIANT) {
        expect(variant, value);
    }
    if (value) {
        field.value = std::move(value);
    }
}

template <typename T>
inline constexpr bool isLenient = false;
template <typename T>
inline constexpr bool isLenient<dbus::Lenient<T>> = true;

// Nullopt if decoding must fail: the value is not a dictionary, a key is not a string, or a known key's value has the
// wrong type.
template <HasKeys Record>
void expect(const Value& value, std::optional<Record>& expected) {
    const Value& dictionary = bare(value);
    bool holds = dictionary.type() == SD_BUS_TYPE_ARRAY;
    Record record{};
    for (const Value& entry : dictionary.contents) {
        const auto fill = [&](const auto& known) {
            using Field = std::remove_reference_t<decltype(record.*known.second)>;
            if (entry.contents.front().text != known.first) {
                return true;
            }
            if constexpr (isLenient<Field>) {
                if (entry.contents.back().type() == SD_BUS_TYPE_VARIANT) {
                    expectLenient(entry.contents.back(), record.*known.second);
                }
                return true;
            } else {
                std::optional<Field> field;
                expect(entry.contents.back(), field);
                if (field) {
                    record.*known.second = std::move(*field);
                }
                return field.has_value();
            }
        };
        holds = holds && entry.type() == SD_BUS_TYPE_DICT_ENTRY_BEGIN &&
                entry.contents.front().signature == "s" &&
                std::apply([&](const auto&... known) { return (fill(known) && ...); }, keysOf(&record));
    }
    if (holds) {
        expected = std::move(record);
    }
}

template <typename T>
bool same(const T& a, const T& b) {
    if constexpr (HasKeys<T>) {
        return std::apply(
            [&](const auto&... known) { return (same(a.*known.second, b.*known.second) && ...); },
            keysOf(&a));
    } else {
        return a == b;
    }
}

// A property dictionary: mostly keys that some record knows, with values mostly of their types.
Value makeDictionary(FuzzedDataProvider& bytes);

}  // namespace kaz::fuzz
