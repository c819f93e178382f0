#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::sim {

enum class Security { open, wep, wpa, wpa2, wpa2Wpa3, wpa3, eap };

// The names used in neighbourhood files: "open", "wep", "wpa", "wpa2", "wpa2-wpa3", "wpa3", "eap".
std::string_view toText(Security security);
std::optional<Security> securityFromText(std::string_view text);

// An account that the network's authentication server accepts. An empty method or phase2 allows any.
struct EapAccount {
    std::string identity = {};
    std::string password = {};
    std::string method = {};
    std::string phase2 = {};

    bool operator==(const EapAccount&) const = default;
};

// A simulated access point.
struct AccessPoint {
    std::string ssid = {};           // bytes
    std::string bssid = {};          // "02:00:00:00:00:01"; never changes
    std::int16_t signal = -60;       // dBm
    std::uint16_t frequency = 2412;  // MHz
    Security security = Security::open;
    std::string password = {};  // WEP, WPA and SAE
    std::vector<EapAccount> accounts = {};
    std::string caFile = {};        // the EAP server's certificate is of the CA in this file
    std::string serverDomain = {};  // and for this domain
    bool hidden = false;            // beacons without its SSID, answers only probes for it
    bool full = false;              // refuses every station
    bool busy = false;              // leaves handshakes unfinished until this is false

    bool operator==(const AccessPoint&) const = default;
};

// The six bytes of a BSSID in text form; empty if the text is invalid.
std::optional<std::string> bssidBytes(std::string_view text);

}  // namespace kaz::sim
