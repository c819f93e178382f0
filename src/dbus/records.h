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
    dbus::Lenient<std::vector<unsigned char>> bssid;
    dbus::Lenient<unsigned short> frequency;  // MHz
    dbus::Lenient<std::vector<unsigned int>>
        rates;                        // bit/s; also what the access point demands of its stations
    dbus::Lenient<std::string> mode;  // "infrastructure", "ad-hoc" or "mesh"
};

// The reply to a signal poll.
struct SignalPoll {
    std::optional<int> rssi;       // dBm
    dbus::Lenient<int> linkSpeed;  // Mbit/s
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
    Lenient<int> authStatusCode;   // IEEE 802.11 status code
    Lenient<int> assocStatusCode;  // IEEE 802.11 status code
    Lenient<std::string> currentAuthMode;
    Lenient<std::string> saePwe;  // how SAE derives its element; not every supplicant tells it
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
                   field("RSN", &wifi::BSSData::rsn), field("BSSID", &wifi::BSSData::bssid),
                   field("Frequency", &wifi::BSSData::frequency), field("Rates", &wifi::BSSData::rates),
                   field("Mode", &wifi::BSSData::mode));
};

template <>
struct RecordFields<wifi::SignalPoll> {
    static constexpr auto table =
        std::tuple(field("rssi", &wifi::SignalPoll::rssi), field("linkspeed", &wifi::SignalPoll::linkSpeed));
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
                   field("Ifname", &SupplicantInterfaceProperties::ifname),
                   field("AuthStatusCode", &SupplicantInterfaceProperties::authStatusCode),
                   field("AssocStatusCode", &SupplicantInterfaceProperties::assocStatusCode),
                   field("CurrentAuthMode", &SupplicantInterfaceProperties::currentAuthMode),
                   field("SaePwe", &SupplicantInterfaceProperties::saePwe));
};

// Instantiated once, in records.cpp.
extern template CodecResult<wifi::SystemdUnitProperty> read(sd_bus_message*);
extern template CodecResult<wifi::ConfiguredSsid> read(sd_bus_message*);
extern template CodecResult<wifi::BSSData> read(sd_bus_message*);
extern template CodecResult<wifi::SignalPoll> read(sd_bus_message*);
extern template CodecResult<NetworkdLinkProperties> read(sd_bus_message*);
extern template CodecResult<SupplicantInterfaceProperties> read(sd_bus_message*);

}  // namespace kaz::dbus
