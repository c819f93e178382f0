#include "kazwifictl/text/words.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <wifi/client/words.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "kazwifictl/text/text_of.h"

namespace kaz::ctl {

using wifi::Cause;
using wifi::Certainty;
using wifi::ConnectionInfo;
using wifi::ConnectResult;
using wifi::SecurityMode;
using wifi::client::Words;

namespace {

struct Security {
    SecurityMode mode = SecurityMode::none;
    std::array<std::string_view, 3> spellings{};  // the first is the name; the others are understood too
};

constexpr std::array<Security, 8> securities{{
    {SecurityMode::none, {"open", "none"}},
    {SecurityMode::wep, {"wep"}},
    {SecurityMode::wpaPsk, {"wpa", "wpa-psk", "wpa1"}},
    {SecurityMode::rsnPsk, {"wpa2", "wpa2-psk", "rsn"}},
    {SecurityMode::sae, {"wpa3", "wpa3-psk", "sae"}},
    {SecurityMode::enterprise, {"enterprise", "eap", "wpa-eap"}},
    {SecurityMode::enterpriseVariant, {"enterprise"}},
    {SecurityMode::unsupported, {"unsupported"}},
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

std::string securityInWords(SecurityMode mode) {
    return Words().security(mode);
}

std::string securityInWords(const wifi::NetworkAccess& access) {
    return Words().security(access);
}

std::string_view obstacleName(const wifi::NetworkAccess& access) {
    using wifi::NetworkDemands;
    if (access.mode != SecurityMode::unsupported) {
        return {};
    }
    constexpr std::array<std::pair<bool NetworkDemands::*, std::string_view>, 4> names{{
        {&NetworkDemands::adHoc, "ad-hoc"},
        {&NetworkDemands::hashToElement, "hash-to-element"},
        {&NetworkDemands::owe, "owe"},
        {&NetworkDemands::rsnPskSha256, "wpa2-sha256"},
    }};
    for (const auto& [demand, name] : names) {
        if (access.demands.*demand) {
            return name;
        }
    }
    return "other";
}

std::string_view securityInBrief(SecurityMode mode) {
    return textOf(mode,
                  {{SecurityMode::none, "open"},
                   {SecurityMode::wep, "WEP"},
                   {SecurityMode::wpaPsk, "WPA"},
                   {SecurityMode::rsnPsk, "WPA2"},
                   {SecurityMode::sae, "WPA3"},
                   {SecurityMode::enterprise, "EAP"},
                   {SecurityMode::enterpriseVariant, "EAP"}},
                  "?");
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

std::string statusInWords(ConnectionInfo::Status status) {
    return Words().status(status);
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

bool isKnown(const wifi::NetworkInUse& network) {
    return network.frequency != 0 ||
           std::any_of(network.bssid.begin(), network.bssid.end(), [](auto byte) { return byte != 0; });
}

std::string bssidText(const std::array<std::uint8_t, 6>& bssid) {
    return fmt::format("{:02x}", fmt::join(bssid, ":"));
}

int channelOf(int frequency) {
    constexpr int channel14 = 2484;
    if (frequency >= 2412 && frequency < channel14) {
        return (frequency - 2407) / 5;
    }
    if (frequency == channel14) {
        return 14;
    }
    if (frequency > 5000 && frequency < 5950) {
        return (frequency - 5000) / 5;
    }
    return frequency > 5950 && frequency <= 7125 ? (frequency - 5950) / 5 : 0;
}

std::string channelText(int frequency) {
    const int channel = channelOf(frequency);
    return channel == 0 ? fmt::format("{} MHz", frequency) : fmt::format("{} ({} MHz)", channel, frequency);
}

std::string outcomeInWords(const wifi::Outcome& outcome, std::string_view name) {
    if (outcome.cause == Cause::none) {
        return {};
    }
    // The supplicant leaves with this reason when somebody else asked it to.
    constexpr int leaving = 3;
    const wifi::Evidence& evidence = outcome.evidence;
    if (outcome.cause == Cause::unknown && evidence.reasonSender == wifi::Evidence::Sender::device &&
        evidence.reasonCode == leaving) {
        return fmt::format("disconnected from {}: another program probably asked for it", name);
    }
    return fmt::format("{} {}: {}",
                       outcome.stage >= wifi::Stage::address ? "disconnected from" : "no connection to", name,
                       Words().cause(outcome));
}

std::string_view reasonName(ConnectionInfo::DisconnectReason reason) {
    using Reason = ConnectionInfo::DisconnectReason;
    return textOf(reason, {{Reason::causedByUser, "user"}, {Reason::causedBySystem, "system"}});
}

std::optional<ServerTrust> serverTrust(SecurityMode mode, const wifi::Certificates& certificates) {
    if (!isEnterprise(mode)) {
        return std::nullopt;
    }
    if (certificates.caFile.empty()) {
        return ServerTrust::notVerified;
    }
    return certificates.serverDomain.empty() ? ServerTrust::anyOfCa : ServerTrust::verified;
}

std::string_view serverTrustName(ServerTrust trust) {
    return textOf(trust, {{ServerTrust::verified, "verified"},
                          {ServerTrust::anyOfCa, "any-of-ca"},
                          {ServerTrust::notVerified, "not-verified"}});
}

std::string_view serverRemark(std::optional<ServerTrust> trust) {
    return textOf(
        trust,
        {{ServerTrust::anyOfCa, "  any server of this CA is trusted; --domain verifies which one\n"},
         {ServerTrust::notVerified,
          "  the server is not verified: a false access point could get the password;\n"
          "  --ca-file and --domain verify it\n"}},
        "");
}

std::string brokenRule(ConnectResult verdict, SecurityMode mode) {
    return Words().verdict(verdict, mode);
}

std::string_view causeName(Cause cause) {
    return textOf(cause, {{Cause::outOfRange, "out-of-range"},
                          {Cause::nothingInCommon, "nothing-in-common"},
                          {Cause::wrongKey, "wrong-key"},
                          {Cause::refused, "refused"},
                          {Cause::full, "full"},
                          {Cause::banned, "banned"},
                          {Cause::eapRejected, "eap-rejected"},
                          {Cause::serverUntrusted, "server-untrusted"},
                          {Cause::noEapMethod, "no-eap-method"},
                          {Cause::noAddress, "no-address"},
                          {Cause::radioBlocked, "radio-blocked"},
                          {Cause::supplicantGone, "supplicant-gone"},
                          {Cause::supplicantSilent, "supplicant-silent"},
                          {Cause::requestRefused, "request-refused"},
                          {Cause::givenUp, "given-up"},
                          {Cause::replaced, "replaced"},
                          {Cause::weakSignal, "weak-signal"},
                          {Cause::accessPointGone, "access-point-gone"},
                          {Cause::deauthenticated, "deauthenticated"}});
}

std::string_view certaintyName(Certainty certainty) {
    return textOf(certainty, {{Certainty::probable, "probable"}, {Certainty::certain, "certain"}});
}

}  // namespace kaz::ctl
