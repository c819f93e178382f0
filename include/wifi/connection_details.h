/// @file
/// Why the last connection or attempt ended, with the evidence, beside the state that it explains. All are plain
/// copyable records. The numbers of all enumerators are fixed: they may be stored and compared.
///
/// A later version of the library may return causes that this header does not have. Show them as Cause::unknown.
#pragma once

#include <wifi/failure_reason.h>
#include <wifi/types.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

namespace kaz::wifi {

/// Why a connection or an attempt ended.
enum class Cause : std::int32_t {
    none = 0,             ///< nothing has ended yet
    unknown = 1,          ///< it ended, but nothing that was reported explains why
    outOfRange = 2,       ///< no access point announces the SSID
    nothingInCommon = 3,  ///< in range, but nothing that both sides support; see Evidence::demands
    wrongKey = 4,         ///< the key or password differs from the network's
    refused = 5,          ///< the access point refused for another reason; see the codes in Evidence
    full = 6,             ///< the access point takes no further device
    banned = 7,           ///< the access point takes devices, but not this one
    eapRejected = 8,      ///< the EAP server rejected the identity or the password
    serverUntrusted = 9,  ///< the EAP server's certificate was not accepted
    noEapMethod = 10,     ///< device and EAP server agreed on no method
    noAddress = 11,     ///< the radio link is up, but no address was obtained; see ConnectionDetails::trouble
    radioBlocked = 12,  ///< the radio is switched off: blocked (rfkill), or the interface is down
    supplicantGone = 13,    ///< the supplicant ended, lost its interface, or cannot be reached
    supplicantSilent = 14,  ///< the supplicant did not answer; see also ConnectionDetails::trouble
    requestRefused = 15,    ///< the supplicant did not take the request, or knows no network of this SSID
    givenUp = 16,           ///< the user disconnected, forgot the network or switched Wi-Fi off
    replaced = 17,          ///< another attempt took its place
    weakSignal = 18,        ///< the access point was lost while its signal was weak
    accessPointGone = 19,   ///< the access point stopped answering, or said that it leaves
    deauthenticated = 20,   ///< the access point ended a connection that worked; see Evidence::reasonCode
};

/// How much of a cause was observed and how much was concluded.
enum class Certainty : std::int32_t {
    unknown = 0,   ///< nothing that was reported supports the cause or speaks against it
    probable = 1,  ///< what was reported fits this cause best, but fits others too
    certain = 2,   ///< it was reported, or it was this program's own request
};

/// How far a connection or an attempt came.
enum class Stage : std::int32_t {
    none = 0,            ///< no attempt
    requested = 1,       ///< the network was requested; no access point was tried
    authenticating = 2,  ///< an access point was tried
    associating = 3,     ///< the access point accepted the authentication
    eap = 4,             ///< the EAP server was reached
    keyExchange = 5,     ///< the keys were being exchanged (4-way or group handshake)
    address = 6,         ///< the radio link was up; an address was being obtained
    online = 7,          ///< an address was obtained
};

/// What the access points of one network demand of a device. Several may be true: then one of them suffices.
struct NetworkDemands {
    bool nothing = false;        ///< an open network
    bool wep = false;            ///< a WEP key
    bool wpaPsk = false;         ///< WPA personal
    bool rsnPsk = false;         ///< WPA2 personal
    bool rsnPskSha256 = false;   ///< WPA2 personal with SHA-256
    bool sae = false;            ///< WPA3 personal
    bool enterprise = false;     ///< WPA enterprise (EAP)
    bool owe = false;            ///< Enhanced Open
    bool other = false;          ///< key management that is none of these
    bool hashToElement = false;  ///< WPA3 personal only by hash-to-element (the supplicant's option sae_pwe)
    bool adHoc = false;          ///< a network without an access point

    friend bool operator==(const NetworkDemands& a, const NetworkDemands& b) {
        return a.nothing == b.nothing && a.wep == b.wep && a.wpaPsk == b.wpaPsk && a.rsnPsk == b.rsnPsk &&
               a.rsnPskSha256 == b.rsnPskSha256 && a.sae == b.sae && a.enterprise == b.enterprise &&
               a.owe == b.owe && a.other == b.other && a.hashToElement == b.hashToElement &&
               a.adHoc == b.adHoc;
    }
    friend bool operator!=(const NetworkDemands& a, const NetworkDemands& b) { return !(a == b); }
};

/// What was observed. Everything is from the last try of the attempt; before another try it is cleared.
struct Evidence {
    /// Who sent the frame with the reason code.
    enum class Sender : std::int32_t {
        nobody = 0,       ///< no reason was reported
        accessPoint = 1,  ///< the access point ended the link
        device = 2,       ///< this device ended the link
    };

    /// The report of the EAP exchange that explains most.
    enum class Eap : std::int32_t {
        none = 0,           ///< no EAP exchange began
        started = 1,        ///< it began
        methodRefused = 2,  ///< the device knows none of the methods that the server proposed
        methodAgreed = 3,   ///< a method was agreed
        serverRefused = 4,  ///< the device did not accept the server's certificate
        rejected = 5,       ///< the server ended the exchange with a failure
        succeeded = 6,      ///< the server accepted the device
    };

    int reasonCode = 0;  ///< IEEE 802.11 reason code, as in reasonCodeName(); 0: none was reported
    Sender reasonSender = Sender::nobody;  ///< who sent the reason code
    int authenticationStatus = 0;  ///< IEEE 802.11 status code, as in statusCodeName(); 0: none but success
    int associationStatus = 0;     ///< the same of the association
    Eap eap = Eap::none;           ///< how the EAP exchange went
    bool keyExchange = false;      ///< the exchange of keys had begun
    bool mismatchReported =
        false;                 ///< the supplicant itself reported that the key or password does not match
    bool scanned = false;      ///< a scan ended during the attempt
    bool seen = false;         ///< an access point announces the SSID
    int signal = NoSignaldBm;  ///< dBm; of the strongest access point that announces the SSID
    NetworkDemands demands;    ///< of the access points that announce the SSID

    friend bool operator==(const Evidence& a, const Evidence& b) {
        return a.reasonCode == b.reasonCode && a.reasonSender == b.reasonSender &&
               a.authenticationStatus == b.authenticationStatus &&
               a.associationStatus == b.associationStatus && a.eap == b.eap &&
               a.keyExchange == b.keyExchange && a.mismatchReported == b.mismatchReported &&
               a.scanned == b.scanned && a.seen == b.seen && a.signal == b.signal && a.demands == b.demands;
    }
    friend bool operator!=(const Evidence& a, const Evidence& b) { return !(a == b); }
};

/// How a connection or an attempt ended.
struct Outcome {
    std::string ssid;                            ///< the network; empty: nothing has ended yet
    Stage stage = Stage::none;                   ///< how far it came
    Cause cause = Cause::none;                   ///< why it ended
    Certainty certainty = Certainty::unknown;    ///< how certain the cause is
    Evidence evidence;                           ///< what was observed
    std::chrono::steady_clock::time_point time;  ///< when the end was noticed; zero: nothing has ended yet

    friend bool operator==(const Outcome& a, const Outcome& b) {
        return a.ssid == b.ssid && a.stage == b.stage && a.cause == b.cause && a.certainty == b.certainty &&
               a.evidence == b.evidence && a.time == b.time;
    }
    friend bool operator!=(const Outcome& a, const Outcome& b) { return !(a == b); }
};

/// The access point in use, as far as the supplicant tells. Empty without a connection.
struct NetworkInUse {
    SecurityMode securityMode = SecurityMode::none;  ///< what protects the link, also `sae`
    std::array<std::uint8_t, 6> bssid{};             ///< of the access point; all zero when unknown
    int frequency = 0;                               ///< MHz; 0 when unknown
    int rate = 0;  ///< Mbit/s when the signal was last polled, once per minute; 0 when unknown

    friend bool operator==(const NetworkInUse& a, const NetworkInUse& b) {
        return a.securityMode == b.securityMode && a.bssid == b.bssid && a.frequency == b.frequency &&
               a.rate == b.rate;
    }
    friend bool operator!=(const NetworkInUse& a, const NetworkInUse& b) { return !(a == b); }
};

/// The state of the connection with what explains it, as one consistent record.
struct ConnectionDetails {
    ConnectionInfo info;   ///< as Manager::connectionInfo()
    Outcome lastOutcome;   ///< of the last connection or attempt that ended; stays until the next one ends
    NetworkInUse network;  ///< of `info.ssid`, from `connectingIP` on

    /// What a user interface should show in place of `info.status`. While the device roams to another access point of
    /// the same network, `info.status` passes through all stages within milliseconds. This one stays `connected` for
    /// 3 seconds, unless the connection ends.
    ConnectionInfo::Status shownStatus = ConnectionInfo::Status::disconnected;

    /// What is wrong with the present stage, which goes on: `noAddress` when no address was obtained within
    /// Manager::setAddressTimeout(); `supplicantSilent` during an attempt or a connection while the supplicant answers no
    /// call, which shows within about a minute; otherwise `none`.
    Cause trouble = Cause::none;

    /// Why the supplicant cannot be used: what Manager::isWifiStackInitialized() does not tell.
    StackTrouble stack;

    friend bool operator==(const ConnectionDetails& a, const ConnectionDetails& b) {
        return a.info == b.info && a.lastOutcome == b.lastOutcome && a.network == b.network &&
               a.shownStatus == b.shownStatus && a.trouble == b.trouble && a.stack == b.stack;
    }
    friend bool operator!=(const ConnectionDetails& a, const ConnectionDetails& b) { return !(a == b); }
};

/// The name of an IEEE 802.11 reason code, such as "4WAY_HANDSHAKE_TIMEOUT"; "<unknown>" if it has none. The text is
/// static and never null. Callable from any thread.
[[gnu::visibility("default")]] const char* reasonCodeName(int code);

/// The same for an IEEE 802.11 status code, such as "AP_UNABLE_TO_HANDLE_NEW_STA".
[[gnu::visibility("default")]] const char* statusCodeName(int code);

}  // namespace kaz::wifi
