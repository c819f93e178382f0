// The expected records of property dictionaries, computed without sd-bus and without the decoder's tables.
#pragma once

#include "dbus/records.h"
#include "fuzz/dbus_value.h"
#include "fuzz/reference_reader.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kaz::fuzz {

// Nullopt if decoding must fail: the value is not a dictionary, a key is not a string, or a known key's value has the
// wrong type.
std::optional<wifi::SystemdUnitProperty> expectUnit(const Value& value);
std::optional<wifi::ConfiguredSsid> expectConfiguredSsid(const Value& value);
std::optional<wifi::BSSData> expectBss(const Value& value);
std::optional<wifi::SignalPoll> expectSignalPoll(const Value& value);
std::optional<dbus::NetworkdLinkProperties> expectLink(const Value& value);
std::optional<dbus::SupplicantInterfaceProperties> expectInterface(const Value& value);

bool same(const wifi::SystemdUnitProperty& a, const wifi::SystemdUnitProperty& b);
bool same(const wifi::ConfiguredSsid& a, const wifi::ConfiguredSsid& b);
bool same(const wifi::BSSData& a, const wifi::BSSData& b);
bool same(const wifi::SignalPoll& a, const wifi::SignalPoll& b);
bool same(const dbus::NetworkdLinkProperties& a, const dbus::NetworkdLinkProperties& b);
bool same(const dbus::SupplicantInterfaceProperties& a, const dbus::SupplicantInterfaceProperties& b);

// A property dictionary: mostly keys that some record knows, with values mostly of their types.
Value makeDictionary(FuzzedDataProvider& bytes);

}  // namespace kaz::fuzz
