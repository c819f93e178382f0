/// @file
/// The values that the library and its callers exchange. All are plain copyable records.
///
/// An SSID is a sequence of bytes, not text: it may contain NUL, quotes, terminal escape sequences and
/// invalid UTF-8. Escape it before you show it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace kaz::wifi {

/// The signal strength, in dBm, that means "no signal known".
inline constexpr std::int16_t NoSignaldBm = -100;

/// The most bytes that an SSID has.
inline constexpr std::size_t MaxSsidBytes = 32;

/// How a network is protected. The numbers are fixed: they may be stored and compared.
enum class SecurityMode : std::int32_t {
    none = 0,               ///< open network
    wep = 1,                ///< WEP; the key has 5 or 13 characters
    wpaPsk = 2,             ///< WPA personal (the network announces a WPA element)
    rsnPsk = 3,             ///< WPA2 personal (the network announces an RSN element), also mixed with WPA3
    sae = 4,                ///< WPA3 personal; a scan never reports it, only a caller requests it
    enterprise = 5,         ///< WPA enterprise (EAP)
    enterpriseVariant = 6,  ///< configured exactly as `enterprise`; a scan never reports it
    unsupported = 7,        ///< key management that the library cannot configure; also WPA3-only networks
};

/// The mode that a user interface shows next to a network: what the user has to enter.
enum class UISecurityMode : std::int32_t {
    none = 0,         ///< nothing
    password = 1,     ///< one password or key
    enterprise = 2,   ///< the fields of an enterprise network
    unsupported = 3,  ///< connecting is not possible
};

/// What a user has to enter for `mode`. A value outside the enumeration gives `none`. Callable from any
/// thread.
[[gnu::visibility("default")]] UISecurityMode toUISecurityMode(SecurityMode mode);

/// One network in range: all access points that announce the same SSID.
struct WifiNetwork {
    std::string ssid;  ///< never empty in Manager::networks()
    int signal = 0;    ///< dBm; of the strongest access point in the last results
    SecurityMode securityMode = SecurityMode::none;  ///< of the first access point the supplicant lists
    bool configured = false;                         ///< the supplicant has a configuration for this SSID

    friend bool operator==(const WifiNetwork& a, const WifiNetwork& b) {
        return a.ssid == b.ssid && a.signal == b.signal && a.securityMode == b.securityMode &&
               a.configured == b.configured;
    }
    friend bool operator!=(const WifiNetwork& a, const WifiNetwork& b) { return !(a == b); }
};

/// What a caller passes to Manager::connect. `securityMode` decides which fields are used.
struct ConnectionSettings {
    std::string ssid;                                ///< 1 to 32 bytes
    SecurityMode securityMode = SecurityMode::none;  ///< what the network requires
    bool hidden = false;       ///< the network may hide its SSID, so the supplicant probes for it by name
    std::string password;      ///< WEP key, pre-shared key, SAE password or EAP password
    std::string identity;      ///< EAP identity
    std::string eapMethod;     ///< one of Manager::eapMethods(); empty: server and supplicant negotiate
    std::string phase2Method;  ///< one of Manager::phase2Methods(); empty: none is configured
    std::string anonymousIdentity;  ///< EAP outer identity; empty: none
};

/// The state of the connection, as one consistent record.
struct ConnectionInfo {
    /// The stage of the connection.
    enum class Status : std::int32_t {
        disconnected = 0,    ///< no connection and no attempt
        connectingWifi = 1,  ///< the radio link is being set up
        connectingIP = 2,    ///< the radio link is up; an address is being obtained
        connected = 3,       ///< networkd reports the link online
    };

    /// Who ended the last connection or attempt. Cleared when the supplicant starts or stops, and when the
    /// connection to the bus is lost.
    enum class DisconnectReason : std::int32_t {
        unknown = 0,         ///< nothing ended since the last clearing
        causedByUser = 1,    ///< a disconnect, forget or connect request ended it
        causedBySystem = 2,  ///< the network, the supplicant or a timeout ended it
    };

    Status status = Status::disconnected;  ///< the stage of the connection to `ssid`
    std::string ssid;                      ///< empty while disconnected
    int signal = 0;                        ///< dBm; NoSignaldBm when unknown; 0 before the first report
    DisconnectReason disconnectReason = DisconnectReason::unknown;  ///< of the last disconnect
    std::chrono::steady_clock::time_point disconnectTime;  ///< when it was noticed; zero: no disconnect
    std::string disconnectSsid;                            ///< the network that was disconnected

    friend bool operator==(const ConnectionInfo& a, const ConnectionInfo& b) {
        return a.status == b.status && a.ssid == b.ssid && a.signal == b.signal &&
               a.disconnectReason == b.disconnectReason && a.disconnectTime == b.disconnectTime &&
               a.disconnectSsid == b.disconnectSsid;
    }
    friend bool operator!=(const ConnectionInfo& a, const ConnectionInfo& b) { return !(a == b); }
};

/// The verdict of Manager::connect on the settings. Any value but `ok` means that nothing changed. `ok` does
/// not promise an attempt: while 4096 requests wait, the request is dropped (see Manager).
enum class ConnectResult : std::int32_t {
    ok = 0,                       ///< accepted; the outcome shows in ConnectionInfo
    ssidEmpty = 1,                ///< no bytes
    ssidTooLong = 2,              ///< more than 32 bytes
    passwordTooShort = 3,         ///< wpaPsk, rsnPsk: fewer than 8 bytes; sae: empty
    passwordTooLong = 4,          ///< wpaPsk, rsnPsk: more than 63 bytes; sae: more than 1024 bytes
    wepKeyInvalidLength = 5,      ///< neither 5 nor 13 bytes
    eapMethodUnsupported = 6,     ///< not empty and not among Manager::eapMethods()
    phase2MethodUnsupported = 7,  ///< not empty and not among Manager::phase2Methods()
    securityModeUnsupported = 8,  ///< SecurityMode::unsupported was requested
    // The next four are returned only for Certificates that are not empty.
    fileInvalid = 9,           ///< a path is relative, has more than 900 bytes or NUL, or is not UTF-8
    caFileMissing = 10,        ///< a server domain without a CA file, which would verify nothing
    serverDomainInvalid = 11,  ///< more than 900 bytes, or not letters, digits, "-", "_", "." and ";"
    keyFileMissing = 12,       ///< a client certificate or the method "TLS" without a private key
    // Only validate returns this one: connect accepts such settings, and the attempt fails after 2000 ms.
    notSendable = 13,  ///< a text that is used has NUL or is not UTF-8, so D-Bus cannot carry it
};

}  // namespace kaz::wifi
