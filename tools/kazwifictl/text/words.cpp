#include "kazwifictl/text/words.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "kazwifictl/text/text_of.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;
using wifi::ConnectResult;
using wifi::SecurityMode;

namespace {

struct Security {
    SecurityMode mode;
    std::string_view inWords;
    std::string_view likelyCause;                 // of a refusal
    std::array<std::string_view, 3> spellings{};  // the first is the name; the others are understood too
};

constexpr std::string_view passwordWrong = "the password is probably wrong";
constexpr std::string_view accountWrong = "the identity, the password or the EAP method is probably wrong";

constexpr std::array<Security, 8> securities{{
    {SecurityMode::none,
     "open",
     "the access point rejected this device; it may be full or accept only known devices",
     {"open", "none"}},
    {SecurityMode::wep, "WEP", "the WEP key is probably wrong", {"wep"}},
    {SecurityMode::wpaPsk, "WPA personal", passwordWrong, {"wpa", "wpa-psk", "wpa1"}},
    {SecurityMode::rsnPsk, "WPA2 personal", passwordWrong, {"wpa2", "wpa2-psk", "rsn"}},
    {SecurityMode::sae, "WPA3 personal", passwordWrong, {"wpa3", "wpa3-psk", "sae"}},
    {SecurityMode::enterprise, "WPA enterprise", accountWrong, {"enterprise", "eap", "wpa-eap"}},
    {SecurityMode::enterpriseVariant, "WPA enterprise", accountWrong, {"enterprise"}},
    {SecurityMode::unsupported, "not supported", "the access point rejected this device", {"unsupported"}},
}};

const Security& find(SecurityMode mode) {
    const auto* found = std::find_if(securities.begin(), securities.end(),
                                     [mode](const Security& each) { return each.mode == mode; });
    return found == securities.end() ? securities.back() : *found;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char first, unsigned char second) {
        return std::tolower(first) == std::tolower(second);
    });
}

}  // namespace

std::string_view securityInWords(SecurityMode mode) {
    return find(mode).inWords;
}

std::string_view securityName(SecurityMode mode) {
    return find(mode).spellings.front();
}

std::optional<SecurityMode> securityFromName(std::string_view name) {
    for (const Security& each : securities) {
        const bool named = std::any_of(
            each.spellings.begin(), each.spellings.end(),
            [name](std::string_view spelling) { return !name.empty() && equalIgnoringCase(spelling, name); });
        if (named && each.mode != SecurityMode::unsupported) {
            return each.mode;
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
    using Status = ConnectionInfo::Status;
    return textOf(status, {{Status::disconnected, "not connected"},
                           {Status::connectingWifi, "connecting"},
                           {Status::connectingIP, "getting an address"},
                           {Status::connected, "connected"}});
}

std::string_view preposition(ConnectionInfo::Status status) {
    return status == ConnectionInfo::Status::connectingIP ? "from" : "to";
}

std::string_view statusName(ConnectionInfo::Status status) {
    using Status = ConnectionInfo::Status;
    return textOf(status, {{Status::disconnected, "disconnected"},
                           {Status::connectingWifi, "connecting"},
                           {Status::connectingIP, "getting-address"},
                           {Status::connected, "connected"}});
}

std::string_view reasonName(ConnectionInfo::DisconnectReason reason) {
    using Reason = ConnectionInfo::DisconnectReason;
    return textOf(reason, {{Reason::causedByUser, "user"}, {Reason::causedBySystem, "system"}});
}

std::string_view brokenRule(ConnectResult verdict, SecurityMode mode) {
    const bool sae = mode == SecurityMode::sae;
    return textOf(verdict,
                  {{ConnectResult::ok, ""},
                   {ConnectResult::ssidEmpty, "the SSID is empty"},
                   {ConnectResult::ssidTooLong, "the SSID is longer than 32 bytes"},
                   {ConnectResult::passwordTooShort,
                    sae ? "the password is empty" : "the password is shorter than 8 bytes"},
                   {ConnectResult::passwordTooLong,
                    sae ? "the password is longer than 1024 bytes" : "the password is longer than 63 bytes"},
                   {ConnectResult::wepKeyInvalidLength, "a WEP key has 5 or 13 characters"},
                   {ConnectResult::eapMethodUnsupported, "wpa_supplicant does not offer this EAP method"},
                   {ConnectResult::phase2MethodUnsupported, "unknown inner method"},
                   {ConnectResult::securityModeUnsupported, "the network's security is not supported"}},
                  "the settings are not valid");
}

std::string_view likelyCause(SecurityMode mode) {
    return find(mode).likelyCause;
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
