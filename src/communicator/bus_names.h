// Names on the bus: services, object paths and interfaces of the daemons.
#pragma once

namespace kaz::wifi::bus {

inline constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
inline constexpr const char* propertiesChanged = "PropertiesChanged";

namespace supplicant {
inline constexpr const char* service = "fi.w1.wpa_supplicant1";
inline constexpr const char* rootPath = "/fi/w1/wpa_supplicant1";
inline constexpr const char* rootInterface = "fi.w1.wpa_supplicant1";
inline constexpr const char* interfaceInterface = "fi.w1.wpa_supplicant1.Interface";
inline constexpr const char* networkInterface = "fi.w1.wpa_supplicant1.Network";
inline constexpr const char* bssInterface = "fi.w1.wpa_supplicant1.BSS";
}  // namespace supplicant

namespace systemd {
inline constexpr const char* service = "org.freedesktop.systemd1";
inline constexpr const char* managerPath = "/org/freedesktop/systemd1";
inline constexpr const char* managerInterface = "org.freedesktop.systemd1.Manager";
inline constexpr const char* unitInterface = "org.freedesktop.systemd1.Unit";
inline constexpr const char* supplicantUnit = "wpa_supplicant.service";
inline constexpr const char* jobMode = "replace";
}  // namespace systemd

namespace networkd {
inline constexpr const char* service = "org.freedesktop.network1";
inline constexpr const char* managerPath = "/org/freedesktop/network1";
inline constexpr const char* managerInterface = "org.freedesktop.network1.Manager";
}  // namespace networkd

}  // namespace kaz::wifi::bus
