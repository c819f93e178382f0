/// @file
/// The values that cross the boundary of the library. All of them are plain copyable records.
///
/// An SSID is a sequence of bytes, not text: it may hold NUL, quotes, terminal escape sequences and invalid
/// UTF-8. Escape it before it is shown.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace kaz::wifi {

/// The signal strength, in dBm, that stands for "no signal known".
inline constexpr std::int16_t NoSignaldBm = -100;

/// How a network is protected. The numbers are fixed: they may be stored and compared.
enum class SecurityMode : std::int32_t {
    none = 0,               ///< open network
    wep = 1,                ///< WEP; the key has 5 or 13 characters
    wpaPsk = 2,             ///< WPA personal (the network announces a WPA element)
    rsnPsk = 3,             ///< WPA2 personal (the network announces an RSN element), also mixed with WPA3
    sae = 4,                ///< WPA3 personal; never reported by a scan, only asked for by a caller
    enterprise = 5,         ///< WPA enterprise (EAP)
    enterpriseVariant = 6,  ///< configured exactly as `enterprise`; never reported by a scan
    unsupported = 7,  ///< key management that this library cannot configure, WPA3-only networks among them
};

/// The coarse mode that a user interface shows beside a network.
enum class UISecurityMode : std::int32_t {
    none = 0,         ///< nothing to ask for
    password = 1,     ///< one password or key
    enterprise = 2,   ///< the fields of an enterprise network
    unsupported = 3,  ///< not to be connected to
};

/// The coarse form of `mode`. A value outside the enumeration counts as `none`. Callable from any thread.
[[gnu::visibility("default")]] UISecurityMode toUISecurityMode(SecurityMode mode);

/// One network in range: all access points that announce the same SSID together.
struct WifiNetwork {
    std::string ssid;  ///< never empty in a published list
    int signal = 0;    ///< dBm; the strongest access point's in the last results
    SecurityMode securityMode = SecurityMode::none;  ///< that of the first access point the supplicant lists
    bool configured = false;                         ///< the supplicant holds a configuration for this SSID

    friend bool operator==(const WifiNetwork& a, const WifiNetwork& b) {
        return a.ssid == b.ssid && a.signal == b.signal && a.securityMode == b.securityMode &&
               a.configured == b.configured;
    }
    friend bool operator!=(const WifiNetwork& a, const WifiNetwork& b) { return !(a == b); }
};

/// What a caller asks for with Manager::connect. Which fields count depends on `securityMode`.
struct ConnectionSettings {
    std::string ssid;                                ///< 1 to 32 bytes
    SecurityMode securityMode = SecurityMode::none;  ///< what the network asks for
    bool hidden = false;       ///< the network may not announce its SSID, so it has to be probed for by name
    std::string password;      ///< WEP key, pre-shared key, SAE password or EAP password
    std::string identity;      ///< EAP identity
    std::string eapMethod;     ///< one of Manager::eapMethods(), or empty to let the two sides agree
    std::string phase2Method;  ///< one of Manager::phase2Methods(), or empty
    std::string anonymousIdentity;  ///< EAP outer identity; empty means none
};

/// The state of the connection, as one consistent record.
struct ConnectionInfo {
    /// How far the connection is.
    enum class Status : std::int32_t {
        disconnected = 0,    ///< no network, and none being connected to
        connectingWifi = 1,  ///< a network was chosen; the radio link is being set up
        connectingIP = 2,    ///< the radio link is up; an address is being obtained
        connected = 3,       ///< networkd reports the link online
    };

    /// Who ended the last connection or attempt. The record of it is cleared when the supplicant starts or
    /// stops, or the bus is lost.
    enum class DisconnectReason : std::int32_t {
        unknown = 0,         ///< nothing was disconnected since the record was cleared
        causedByUser = 1,    ///< a disconnect, forget or connect request ended the connection
        causedBySystem = 2,  ///< the network, the supplicant or a time-out ended it
    };

    Status status = Status::disconnected;  ///< of the network `ssid`
    std::string ssid;                      ///< the network that `status` is about; empty while disconnected
    int signal = 0;  ///< dBm; NoSignaldBm when unknown, 0 in a record nothing was reported into yet
    DisconnectReason disconnectReason = DisconnectReason::unknown;  ///< of the last disconnect
    std::chrono::steady_clock::time_point
        disconnectTime;          ///< when the last disconnect was noticed; zero: none
    std::string disconnectSsid;  ///< the network it was from

    friend bool operator==(const ConnectionInfo& a, const ConnectionInfo& b) {
        return a.status == b.status && a.ssid == b.ssid && a.signal == b.signal &&
               a.disconnectReason == b.disconnectReason && a.disconnectTime == b.disconnectTime &&
               a.disconnectSsid == b.disconnectSsid;
    }
    friend bool operator!=(const ConnectionInfo& a, const ConnectionInfo& b) { return !(a == b); }
};

/// The verdict of Manager::connect on the settings. Every value but `ok` means that nothing was changed.
/// `ok` promises no outcome while 4096 requests are waiting: see Manager.
enum class ConnectResult : std::int32_t {
    ok = 0,                       ///< accepted; the outcome shows in ConnectionInfo
    ssidEmpty = 1,                ///< no bytes at all
    ssidTooLong = 2,              ///< more than 32 bytes
    passwordTooShort = 3,         ///< wpaPsk, rsnPsk: fewer than 8 bytes; sae: empty
    passwordTooLong = 4,          ///< wpaPsk, rsnPsk: more than 63 bytes; sae: more than 1024 bytes
    wepKeyInvalidLength = 5,      ///< neither 5 nor 13 bytes
    eapMethodUnsupported = 6,     ///< not empty and not among Manager::eapMethods()
    phase2MethodUnsupported = 7,  ///< not empty and not among Manager::phase2Methods()
    securityModeUnsupported = 8,  ///< SecurityMode::unsupported was asked for
};

}  // namespace kaz::wifi
