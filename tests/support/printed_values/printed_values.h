#pragma once

#include <wifi/types.h>

#include <cstddef>
#include <initializer_list>
#include <ostream>
#include <type_traits>

// How GoogleTest prints these values in a failure: enumerators by name, records by field. Part of the precompiled
// header of all tests, so that every source of a program prints them in the same way.
namespace kaz::wifi {

// Prints the name at the enumerator's number, or the number itself if it has no name.
template <typename Enumeration>
void printName(Enumeration value, std::initializer_list<const char*> names, std::ostream* out) {
    const auto number = static_cast<std::underlying_type_t<Enumeration>>(value);
    if (number >= 0 && static_cast<std::size_t>(number) < names.size()) {
        *out << names.begin()[number];
    } else {
        *out << "unknown value " << number;
    }
}

inline void PrintTo(SecurityMode mode, std::ostream* out) {
    printName(mode,
              {"none", "wep", "wpaPsk", "rsnPsk", "sae", "enterprise", "enterpriseVariant", "unsupported"},
              out);
}

inline void PrintTo(UISecurityMode mode, std::ostream* out) {
    printName(mode, {"none", "password", "enterprise", "unsupported"}, out);
}

inline void PrintTo(ConnectResult verdict, std::ostream* out) {
    printName(verdict,
              {"ok", "ssidEmpty", "ssidTooLong", "passwordTooShort", "passwordTooLong", "wepKeyInvalidLength",
               "eapMethodUnsupported", "phase2MethodUnsupported", "securityModeUnsupported"},
              out);
}

inline void PrintTo(ConnectionInfo::Status status, std::ostream* out) {
    printName(status, {"disconnected", "connectingWifi", "connectingIP", "connected"}, out);
}

inline void PrintTo(ConnectionInfo::DisconnectReason reason, std::ostream* out) {
    printName(reason, {"unknown", "causedByUser", "causedBySystem"}, out);
}

inline void PrintTo(const ConnectionInfo& info, std::ostream* out) {
    PrintTo(info.status, out);
    *out << " '" << info.ssid << "' " << info.signal << " dBm, ";
    PrintTo(info.disconnectReason, out);
    *out << " '" << info.disconnectSsid << "' @ " << info.disconnectTime.time_since_epoch().count() << " ns";
}

inline void PrintTo(const WifiNetwork& network, std::ostream* out) {
    *out << '\'' << network.ssid << "' " << network.signal << " dBm, ";
    PrintTo(network.securityMode, out);
    *out << (network.configured ? ", configured" : ", not configured");
}

}  // namespace kaz::wifi
