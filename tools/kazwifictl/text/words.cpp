#include "kazwifictl/text/words.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <utility>

namespace kaz::ctl {

using wifi::ConnectionInfo;
using wifi::ConnectResult;
using wifi::SecurityMode;

std::string_view securityInWords(SecurityMode mode) {
    switch (mode) {
        case SecurityMode::none:
            return "open";
        case SecurityMode::wep:
            return "WEP";
        case SecurityMode::wpaPsk:
            return "WPA personal";
        case SecurityMode::rsnPsk:
            return "WPA2 personal";
        case SecurityMode::sae:
            return "WPA3 personal";
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            return "WPA enterprise";
        case SecurityMode::unsupported:
            return "not supported";
    }
    return "unknown";
}

std::string_view securityName(SecurityMode mode) {
    switch (mode) {
        case SecurityMode::none:
            return "open";
        case SecurityMode::wep:
            return "wep";
        case SecurityMode::wpaPsk:
            return "wpa";
        case SecurityMode::rsnPsk:
            return "wpa2";
        case SecurityMode::sae:
            return "wpa3";
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            return "enterprise";
        case SecurityMode::unsupported:
            return "unsupported";
    }
    return "unknown";
}

std::optional<SecurityMode> securityFromName(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, SecurityMode>, 15> spellings{{
        {"open", SecurityMode::none},
        {"none", SecurityMode::none},
        {"wep", SecurityMode::wep},
        {"wpa", SecurityMode::wpaPsk},
        {"wpa-psk", SecurityMode::wpaPsk},
        {"wpa1", SecurityMode::wpaPsk},
        {"wpa2", SecurityMode::rsnPsk},
        {"wpa2-psk", SecurityMode::rsnPsk},
        {"rsn", SecurityMode::rsnPsk},
        {"wpa3", SecurityMode::sae},
        {"wpa3-psk", SecurityMode::sae},
        {"sae", SecurityMode::sae},
        {"enterprise", SecurityMode::enterprise},
        {"eap", SecurityMode::enterprise},
        {"wpa-eap", SecurityMode::enterprise},
    }};
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    for (const auto& [spelling, mode] : spellings) {
        if (spelling == lower) {
            return mode;
        }
    }
    return std::nullopt;
}

std::string securityNames() {
    return fmt::format("{}", fmt::join(securityWords, ", "));
}

bool takesPassword(SecurityMode mode) {
    return mode != SecurityMode::none && mode != SecurityMode::unsupported;
}

bool isEnterprise(SecurityMode mode) {
    return mode == SecurityMode::enterprise || mode == SecurityMode::enterpriseVariant;
}

std::string_view statusInWords(ConnectionInfo::Status status) {
    switch (status) {
        case ConnectionInfo::Status::disconnected:
            return "not connected";
        case ConnectionInfo::Status::connectingWifi:
            return "connecting";
        case ConnectionInfo::Status::connectingIP:
            return "getting an address";
        case ConnectionInfo::Status::connected:
            return "connected";
    }
    return "unknown";
}

std::string_view statusName(ConnectionInfo::Status status) {
    switch (status) {
        case ConnectionInfo::Status::disconnected:
            return "disconnected";
        case ConnectionInfo::Status::connectingWifi:
            return "connecting";
        case ConnectionInfo::Status::connectingIP:
            return "getting-address";
        case ConnectionInfo::Status::connected:
            return "connected";
    }
    return "unknown";
}

std::string_view reasonName(ConnectionInfo::DisconnectReason reason) {
    switch (reason) {
        case ConnectionInfo::DisconnectReason::unknown:
            return "unknown";
        case ConnectionInfo::DisconnectReason::causedByUser:
            return "user";
        case ConnectionInfo::DisconnectReason::causedBySystem:
            return "system";
    }
    return "unknown";
}

std::string_view brokenRule(ConnectResult verdict, SecurityMode mode) {
    const bool sae = mode == SecurityMode::sae;
    switch (verdict) {
        case ConnectResult::ok:
            return {};
        case ConnectResult::ssidEmpty:
            return "the SSID is empty";
        case ConnectResult::ssidTooLong:
            return "the SSID is longer than 32 bytes";
        case ConnectResult::passwordTooShort:
            return sae ? "the password is empty" : "the password is shorter than 8 bytes";
        case ConnectResult::passwordTooLong:
            return sae ? "the password is longer than 1024 bytes" : "the password is longer than 63 bytes";
        case ConnectResult::wepKeyInvalidLength:
            return "a WEP key has 5 or 13 characters";
        case ConnectResult::eapMethodUnsupported:
            return "wpa_supplicant does not offer this EAP method";
        case ConnectResult::phase2MethodUnsupported:
            return "unknown inner method";
        case ConnectResult::securityModeUnsupported:
            return "the network's security is not supported";
    }
    return "the settings are not valid";
}

std::string_view likelyCause(SecurityMode mode) {
    switch (mode) {
        case SecurityMode::none:
            return "the access point rejected this device; it may be full or accept only known devices";
        case SecurityMode::wep:
            return "the WEP key is probably wrong";
        case SecurityMode::wpaPsk:
        case SecurityMode::rsnPsk:
        case SecurityMode::sae:
            return "the password is probably wrong";
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            return "the identity, the password or the EAP method is probably wrong";
        case SecurityMode::unsupported:
            break;
    }
    return "the access point rejected this device";
}

std::optional<std::string_view> causeFromReason(int reason) {
    switch (std::abs(reason)) {
        case 5:
            return "the access point is full";
        case 14:
        case 15:
            return "the password is wrong";
        case 23:
            return "the identity or the password is wrong";
        default:
            return std::nullopt;
    }
}

}  // namespace kaz::ctl
