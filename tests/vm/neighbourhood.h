// The access points of guest/access-points, as settings for Manager::connect.
#pragma once

#include <wifi/types.h>

#include <string>
#include <utility>
#include <vector>

namespace kaz::vm {

inline wifi::ConnectionSettings settings(std::string ssid, wifi::SecurityMode mode,
                                         std::string password = {}) {
    wifi::ConnectionSettings result;
    result.ssid = std::move(ssid);
    result.securityMode = mode;
    result.password = std::move(password);
    return result;
}

inline wifi::ConnectionSettings with(wifi::ConnectionSettings settings, const std::string& password) {
    settings.password = password;
    return settings;
}

inline wifi::ConnectionSettings enterprise(std::string method, std::string phase2, std::string identity,
                                           std::string password) {
    wifi::ConnectionSettings result =
        settings("Kaz Enterprise", wifi::SecurityMode::enterprise, std::move(password));
    result.eapMethod = std::move(method);
    result.phase2Method = std::move(phase2);
    result.identity = std::move(identity);
    result.anonymousIdentity = "anonymous";
    return result;
}

inline wifi::ConnectionSettings hiddenNetwork() {
    wifi::ConnectionSettings result = settings("Kaz Hidden", wifi::SecurityMode::rsnPsk, "hidden-secret");
    result.hidden = true;
    return result;
}

inline const wifi::ConnectionSettings openNetwork = settings("Kaz Open", wifi::SecurityMode::none);
inline const wifi::ConnectionSettings wepNetwork = settings("Kaz WEP", wifi::SecurityMode::wep, "wEp5k");
inline const wifi::ConnectionSettings wpaNetwork =
    settings("Kaz WPA", wifi::SecurityMode::wpaPsk, "wpa-one-secret");
inline const wifi::ConnectionSettings wpa2Network =
    settings("Kaz WPA2", wifi::SecurityMode::rsnPsk, "wpa-two-secret");
inline const wifi::ConnectionSettings mixedNetwork =
    settings("Kaz Mixed", wifi::SecurityMode::rsnPsk, "mixed-secret");
inline const wifi::ConnectionSettings saeNetwork = settings("Kaz SAE", wifi::SecurityMode::sae, "sae-secret");
inline const wifi::ConnectionSettings twinNetwork =
    settings("Kaz Twin", wifi::SecurityMode::rsnPsk, "twin-secret");
inline const wifi::ConnectionSettings peapNetwork = enterprise("PEAP", "MSCHAPV2", "alice", "alice-secret");
inline const wifi::ConnectionSettings ttlsNetwork = enterprise("TTLS", "PAP", "bob", "bob-secret");
inline const wifi::ConnectionSettings quotedNetwork = settings(R"(Say "Kaz" \o/)", wifi::SecurityMode::none);
inline const wifi::ConnectionSettings bytesNetwork = settings("Kaz \xc3(\xff", wifi::SecurityMode::none);
inline const wifi::ConnectionSettings refusingNetwork = settings("Kaz Full", wifi::SecurityMode::none);
inline const wifi::ConnectionSettings absentNetwork =
    settings("Kaz Elsewhere", wifi::SecurityMode::rsnPsk, "absent-secret");

// Secrets that must not appear in a log.
inline const std::vector<std::string> secrets = {
    "wpa-one-secret", "wpa-two-secret", "mixed-secret", "sae-secret",    "alice-secret",
    "bob-secret",     "hidden-secret",  "twin-secret",  "absent-secret", "wrong-secret",
    "another-secret", "wEp5k",          "key-secret",
};

}  // namespace kaz::vm
