#include "support/printed_values/printed_values.h"

#include <cstddef>
#include <initializer_list>
#include <ostream>
#include <type_traits>

namespace kaz::wifi {
namespace {

// The name at the enumerator's number, and the number itself when it has none.
template <typename Enumeration>
void printName(Enumeration value, std::initializer_list<const char*> names, std::ostream& out) {
    const auto number = static_cast<std::underlying_type_t<Enumeration>>(value);
    if (number >= 0 && static_cast<std::size_t>(number) < names.size()) {
        out << names.begin()[number];
    } else {
        out << "unknown value " << number;
    }
}

}  // namespace

void PrintTo(SecurityMode mode, std::ostream* out) {
    printName(mode,
              {"none", "wep", "wpaPsk", "rsnPsk", "sae", "enterprise", "enterpriseVariant", "unsupported"},
              *out);
}

void PrintTo(UISecurityMode mode, std::ostream* out) {
    printName(mode, {"none", "password", "enterprise", "unsupported"}, *out);
}

void PrintTo(ConnectResult verdict, std::ostream* out) {
    printName(verdict,
              {"ok", "ssidEmpty", "ssidTooLong", "passwordTooShort", "passwordTooLong", "wepKeyInvalidLength",
               "eapMethodUnsupported", "phase2MethodUnsupported", "securityModeUnsupported"},
              *out);
}

void PrintTo(ConnectionInfo::Status status, std::ostream* out) {
    printName(status, {"disconnected", "connectingWifi", "connectingIP", "connected"}, *out);
}

void PrintTo(ConnectionInfo::DisconnectReason reason, std::ostream* out) {
    printName(reason, {"unknown", "causedByUser", "causedBySystem"}, *out);
}

void PrintTo(Communicator::SupplicantConnectionStatus status, std::ostream* out) {
    printName(status, {"no report yet", "InterfaceDisabled", "Disconnected", "Connecting", "Connected"},
              *out);
}

void PrintTo(Communicator::PropertyChange change, std::ostream* out) {
    printName(change, {"Unchanged", "Set", "Cleared"}, *out);
}

void PrintTo(const ConnectionInfo& info, std::ostream* out) {
    PrintTo(info.status, out);
    *out << " '" << info.ssid << "' " << info.signal << " dBm, ";
    PrintTo(info.disconnectReason, out);
    *out << " '" << info.disconnectSsid << "' @ " << info.disconnectTime.time_since_epoch().count() << " ns";
}

void PrintTo(const WifiNetwork& network, std::ostream* out) {
    *out << '\'' << network.ssid << "' " << network.signal << " dBm, ";
    PrintTo(network.securityMode, out);
    *out << (network.configured ? ", configured" : ", not configured");
}

}  // namespace kaz::wifi
