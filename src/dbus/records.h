// The records into which the daemons' property dictionaries (a{sv}) are decoded.
#pragma once

#include "dbus/record_codec.h"

#include <kaz/dbus/opath.h>

#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace kaz::wifi {

// A unit of systemd.
struct SystemdUnitProperty {
    std::optional<std::string> activeState;
};

// A network in the supplicant's configuration.
struct ConfiguredSsid {
    std::optional<std::string> ssid;  // the SSID's text form: quoted, or in hexadecimal digits
};

// The "WPA" or "RSN" dictionary of an access point.
struct WPA_RSN {
    std::set<std::string> keyMgmt;  // key-management suites
    std::string group;              // group cipher
};

// An access point. A property that is not reported keeps a neutral value.
struct BSSData {
    short signal = 0;  // dBm
    bool privacy = false;
    std::vector<unsigned char> ssid;
    WPA_RSN wpa;
    WPA_RSN rsn;
};

// The reply to a signal poll.
struct SignalPoll {
    std::optional<int> rssi;  // dBm
};

}  // namespace kaz::wifi

namespace kaz::dbus {

// The manager of systemd-networkd.
struct NetworkdLinkProperties {
    std::optional<std::string> onlineState;
};

// An interface of the supplicant, or its changes.
struct SupplicantInterfaceProperties {
    std::optional<bool> scanning;
    std::optional<std::vector<OPath>> bsss;
    std::optional<OPath> currentNetwork;
    std::optional<OPath> currentBss;
    std::optional<std::string> state;
    std::optional<int> disconnectReason;
    std::optional<std::string> ifname;
};

template <>
struct RecordFields<wifi::SystemdUnitProperty> {
    static constexpr auto table = std::tuple(field("ActiveState", &wifi::SystemdUnitProperty::activeState));
};

template <>
struct RecordFields<wifi::ConfiguredSsid> {
    static constexpr auto table = std::tuple(field("ssid", &wifi::ConfiguredSsid::ssid));
};

template <>
struct RecordFields<wifi::WPA_RSN> {
    static constexpr auto table =
        std::tuple(field("KeyMgmt", &wifi::WPA_RSN::keyMgmt), field("Group", &wifi::WPA_RSN::group));
};

template <>
struct RecordFields<wifi::BSSData> {
    static constexpr auto table =
        std::tuple(field("Signal", &wifi::BSSData::signal), field("Privacy", &wifi::BSSData::privacy),
                   field("SSID", &wifi::BSSData::ssid), field("WPA", &wifi::BSSData::wpa),
                   field("RSN", &wifi::BSSData::rsn));
};

template <>
struct RecordFields<wifi::SignalPoll> {
    static constexpr auto table = std::tuple(field("rssi", &wifi::SignalPoll::rssi));
};

template <>
struct RecordFields<NetworkdLinkProperties> {
    static constexpr auto table = std::tuple(field("OnlineState", &NetworkdLinkProperties::onlineState));
};

template <>
struct RecordFields<SupplicantInterfaceProperties> {
    static constexpr auto table =
        std::tuple(field("Scanning", &SupplicantInterfaceProperties::scanning),
                   field("BSSs", &SupplicantInterfaceProperties::bsss),
                   field("CurrentNetwork", &SupplicantInterfaceProperties::currentNetwork),
                   field("CurrentBSS", &SupplicantInterfaceProperties::currentBss),
                   field("State", &SupplicantInterfaceProperties::state),
                   field("DisconnectReason", &SupplicantInterfaceProperties::disconnectReason),
                   field("Ifname", &SupplicantInterfaceProperties::ifname));
};

// Instantiated once, in records.cpp.
extern template CodecResult<wifi::SystemdUnitProperty> read(sd_bus_message*);
extern template CodecResult<wifi::ConfiguredSsid> read(sd_bus_message*);
extern template CodecResult<wifi::BSSData> read(sd_bus_message*);
extern template CodecResult<wifi::SignalPoll> read(sd_bus_message*);
extern template CodecResult<NetworkdLinkProperties> read(sd_bus_message*);
extern template CodecResult<SupplicantInterfaceProperties> read(sd_bus_message*);

}  // namespace kaz::dbus
