// The library's values in words: short ones for a person, fixed ones for programs.
#pragma once

#include <wifi/types.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kaz::ctl {

// "WPA2 personal"
std::string_view securityInWords(wifi::SecurityMode mode);

// "wpa2": what --security takes and JSON carries.
std::string_view securityName(wifi::SecurityMode mode);

// The reverse; several usual spellings are understood, in any case. Nothing for an unknown word.
std::optional<wifi::SecurityMode> securityFromName(std::string_view name);

// The words of securityName() for what can be connected to.
inline constexpr std::array<std::string_view, 6> securityWords{"open", "wep",  "wpa",
                                                               "wpa2", "wpa3", "enterprise"};

// "open, wep, wpa, wpa2, wpa3, enterprise"
std::string securityNames();

// Whether connecting takes a password (a WEP key among them).
bool takesPassword(wifi::SecurityMode mode);
bool isEnterprise(wifi::SecurityMode mode);

// "getting an address"
std::string_view statusInWords(wifi::ConnectionInfo::Status status);

// "getting-address"
std::string_view statusName(wifi::ConnectionInfo::Status status);

// "user", "system"; "unknown" when nothing was disconnected.
std::string_view reasonName(wifi::ConnectionInfo::DisconnectReason reason);

// The rule that the settings break: "the password has fewer than 8 characters". Empty for `ok`.
std::string_view brokenRule(wifi::ConnectResult verdict, wifi::SecurityMode mode);

// What makes an access point turn a device away when it uses this security, as far as that can be guessed.
std::string_view likelyCause(wifi::SecurityMode mode);

// The same from the IEEE 802.11 reason code of the supplicant's last disconnection, whose sign does not
// matter; nothing when that code says too little.
std::optional<std::string_view> causeFromReason(int reason);

}  // namespace kaz::ctl
