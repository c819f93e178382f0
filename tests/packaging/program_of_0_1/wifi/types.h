// The declarations of 0.1.0, without their comments. Never changed.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace kaz::wifi {

inline constexpr std::int16_t NoSignaldBm = -100;

enum class SecurityMode : std::int32_t {
    none = 0,
    wep = 1,
    wpaPsk = 2,
    rsnPsk = 3,
    sae = 4,
    enterprise = 5,
    enterpriseVariant = 6,
    unsupported = 7,
};

enum class UISecurityMode : std::int32_t {
    none = 0,
    password = 1,
    enterprise = 2,
    unsupported = 3,
};

[[gnu::visibility("default")]] UISecurityMode toUISecurityMode(SecurityMode mode);

struct WifiNetwork {
    std::string ssid;
    int signal = 0;
    SecurityMode securityMode = SecurityMode::none;
    bool configured = false;
    friend bool operator==(const WifiNetwork& a, const WifiNetwork& b) {
        return a.ssid == b.ssid && a.signal == b.signal && a.securityMode == b.securityMode &&
               a.configured == b.configured;
    }
    friend bool operator!=(const WifiNetwork& a, const WifiNetwork& b) { return !(a == b); }
};

struct ConnectionSettings {
    std::string ssid;
    SecurityMode securityMode = SecurityMode::none;
    bool hidden = false;
    std::string password;
    std::string identity;
    std::string eapMethod;
    std::string phase2Method;
    std::string anonymousIdentity;
};

struct ConnectionInfo {
    enum class Status : std::int32_t {
        disconnected = 0,
        connectingWifi = 1,
        connectingIP = 2,
        connected = 3,
    };
    enum class DisconnectReason : std::int32_t {
        unknown = 0,
        causedByUser = 1,
        causedBySystem = 2,
    };
    Status status = Status::disconnected;
    std::string ssid;
    int signal = 0;
    DisconnectReason disconnectReason = DisconnectReason::unknown;
    std::chrono::steady_clock::time_point disconnectTime;
    std::string disconnectSsid;
    friend bool operator==(const ConnectionInfo& a, const ConnectionInfo& b) {
        return a.status == b.status && a.ssid == b.ssid && a.signal == b.signal &&
               a.disconnectReason == b.disconnectReason && a.disconnectTime == b.disconnectTime &&
               a.disconnectSsid == b.disconnectSsid;
    }
    friend bool operator!=(const ConnectionInfo& a, const ConnectionInfo& b) { return !(a == b); }
};

enum class ConnectResult : std::int32_t {
    ok = 0,
    ssidEmpty = 1,
    ssidTooLong = 2,
    passwordTooShort = 3,
    passwordTooLong = 4,
    wepKeyInvalidLength = 5,
    eapMethodUnsupported = 6,
    phase2MethodUnsupported = 7,
    securityModeUnsupported = 8,
};

}  // namespace kaz::wifi
