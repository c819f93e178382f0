// Names for the library's values: short words for a person, and fixed names for programs.
#pragma once

#include <wifi/certificates.h>
#include <wifi/connection_details.h>
#include <wifi/network_access.h>
#include <wifi/types.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kaz::ctl {

// "WPA2 personal"
std::string securityInWords(wifi::SecurityMode mode);

// The same of a network in range: "Enhanced Open" for one that this device cannot join.
std::string securityInWords(const wifi::NetworkAccess& access);

// What keeps this device from joining the network: "owe". Empty if nothing does.
std::string_view obstacleName(const wifi::NetworkAccess& access);

// "WPA2": four columns at most.
std::string_view securityInBrief(wifi::SecurityMode mode);

// "wpa2": what --security takes and JSON carries.
std::string_view securityName(wifi::SecurityMode mode);

// The reverse of securityName(). Ignores case, and knows other usual spellings, such as "sae". Nothing for an
// unknown word.
std::optional<wifi::SecurityMode> securityFromName(std::string_view name);

// The securityName() of each kind of network that can be connected to.
inline constexpr std::array<std::string_view, 6> securityWords{"open", "wep",  "wpa",
                                                               "wpa2", "wpa3", "enterprise"};

// "open, wep, wpa, wpa2, wpa3, enterprise"
std::string securityNames();

// Whether connecting needs a password or a WEP key.
bool takesPassword(wifi::SecurityMode mode);
bool isEnterprise(wifi::SecurityMode mode);

// "getting an address"
std::string statusInWords(wifi::ConnectionInfo::Status status);

// "to" or "from", the word between statusInWords() and the SSID.
std::string_view preposition(wifi::ConnectionInfo::Status status);

// "getting-address"
std::string_view statusName(wifi::ConnectionInfo::Status status);

// Whether anything is known about the access point in use.
bool isKnown(const wifi::NetworkInUse& network);

// "02:00:00:00:01:01"
std::string bssidText(const std::array<std::uint8_t, 6>& bssid);

// The number of the channel; 0 if the frequency is of no usual one.
int channelOf(int frequency);

// "6 (2437 MHz)"; only the frequency when it is of no usual channel.
std::string channelText(int frequency);

// The end of a connection or of an attempt: "disconnected from NAME: the access point ended the connection". Empty when
// nothing has ended. `name` is safe to show.
std::string outcomeInWords(const wifi::Outcome& outcome, std::string_view name);

// "user", "system"; "unknown" when nothing was disconnected.
std::string_view reasonName(wifi::ConnectionInfo::DisconnectReason reason);

// How much it takes to pass as the server of an enterprise network.
enum class ServerTrust {
    verified,     // a certificate of the CA for the domain
    anyOfCa,      // any server certificate of the CA
    notVerified,  // nothing
};

// Nothing for another network, which has no server.
std::optional<ServerTrust> serverTrust(wifi::SecurityMode mode, const wifi::Certificates& certificates);

// "verified", "any-of-ca", "not-verified"
std::string_view serverTrustName(ServerTrust trust);

// A line that says what is not verified, and what would verify it. Empty when there is nothing to say.
std::string_view serverRemark(std::optional<ServerTrust> trust);

// The rule that the settings break: "the password is shorter than 8 bytes". Empty for `ok`.
std::string brokenRule(wifi::ConnectResult verdict, wifi::SecurityMode mode);

// "wrong-key"; "unknown" when nothing explains the end.
std::string_view causeName(wifi::Cause cause);

// "certain", "probable"; "unknown" when nothing supports the cause.
std::string_view certaintyName(wifi::Certainty certainty);

}  // namespace kaz::ctl
