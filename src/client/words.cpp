#include <wifi/client/words.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace kaz::wifi::client {
namespace {

template <typename Value>
struct Text {
    Value value;
    const char* english;
};

struct CauseText {
    Cause cause;
    const char* certain;
    const char* probable;  // also when nothing supports the cause
    const char* advice;    // "" if there is nothing to do
};

constexpr std::array causes{
    CauseText{Cause::unknown, "nothing says why", "nothing says why", "trying again"},
    CauseText{Cause::outOfRange, "no access point with this name is in range",
              "no access point with this name answered", "moving nearer to the access point"},
    CauseText{Cause::nothingInCommon, "the network asks for {}, which these settings or this device lack",
              "the network probably asks for {}, which these settings or this device lack",
              "other settings of the access point"},
    CauseText{Cause::wrongKey, "the password is wrong", "the password is probably wrong",
              "typing the password again"},
    CauseText{Cause::refused, "the access point rejected this device",
              "the access point probably rejected this device", "trying again later"},
    CauseText{Cause::full, "the access point is full", "the access point is probably full",
              "trying again later"},
    CauseText{Cause::banned, "the access point accepts only known devices",
              "the access point probably accepts only known devices",
              "adding this device to the list of the access point"},
    CauseText{Cause::eapRejected, "the server rejected the identity or the password",
              "the server probably rejected the identity or the password",
              "typing identity and password again"},
    CauseText{Cause::serverUntrusted, "the server's certificate is not trusted",
              "the server's certificate is probably not trusted",
              "asking who runs the network for its CA certificate"},
    CauseText{Cause::noEapMethod, "the server offers no EAP method that these settings allow",
              "the server probably offers no EAP method that these settings allow", "another EAP method"},
    CauseText{Cause::noAddress, "the network gives no address", "the network gives no address",
              "restarting the router"},
    CauseText{Cause::radioBlocked, "the radio is switched off", "the radio is probably switched off",
              "switching the radio on, for example with the switch for aeroplanes"},
    CauseText{Cause::supplicantGone, "wpa_supplicant has ended", "wpa_supplicant has probably ended",
              "switching Wi-Fi on again"},
    CauseText{Cause::supplicantSilent, "wpa_supplicant does not answer", "wpa_supplicant does not answer",
              "switching Wi-Fi off and on"},
    CauseText{Cause::requestRefused, "wpa_supplicant did not accept the request",
              "wpa_supplicant probably did not accept the request", "trying again"},
    CauseText{Cause::givenUp, "the user ended it", "the user probably ended it", ""},
    CauseText{Cause::replaced, "another network was chosen", "another network was probably chosen", ""},
    CauseText{Cause::weakSignal, "the signal became too weak", "the signal probably became too weak",
              "moving nearer to the access point"},
    CauseText{Cause::accessPointGone, "the access point is gone", "the access point is probably gone",
              "switching the access point on"},
    CauseText{Cause::deauthenticated, "the access point ended the connection",
              "the access point probably ended the connection", "trying again"},
};

constexpr std::array verdicts{
    Text<ConnectResult>{ConnectResult::ssidEmpty, "the name is empty"},
    Text<ConnectResult>{ConnectResult::ssidTooLong, "the name is longer than 32 bytes"},
    Text<ConnectResult>{ConnectResult::passwordTooShort, "the password is shorter than 8 bytes"},
    Text<ConnectResult>{ConnectResult::passwordTooLong, "the password is longer than 63 bytes"},
    Text<ConnectResult>{ConnectResult::wepKeyInvalidLength, "a WEP key has 5 or 13 characters"},
    Text<ConnectResult>{ConnectResult::eapMethodUnsupported, "this device does not offer this EAP method"},
    Text<ConnectResult>{ConnectResult::phase2MethodUnsupported, "this inner method is not known"},
    Text<ConnectResult>{ConnectResult::securityModeUnsupported,
                        "the security of the network is not supported"},
    Text<ConnectResult>{ConnectResult::fileInvalid,
                        "the path of a file is relative, not UTF-8 or longer than 900 bytes"},
    Text<ConnectResult>{ConnectResult::caFileMissing, "a domain verifies nothing without a CA"},
    Text<ConnectResult>{ConnectResult::serverDomainInvalid, "the domain is not a domain name"},
    Text<ConnectResult>{ConnectResult::keyFileMissing, "the private key is missing"},
    Text<ConnectResult>{
        ConnectResult::notSendable,
        "the name, the identity or the password has NUL or is not UTF-8, so it cannot be sent"},
};
constexpr const char* saePasswordEmpty = "the password is empty";
constexpr const char* saePasswordTooLong = "the password is longer than 1024 bytes";
constexpr const char* otherVerdict = "the settings are not valid";

constexpr std::array securities{
    Text<SecurityMode>{SecurityMode::none, "open"},
    Text<SecurityMode>{SecurityMode::wep, "WEP"},
    Text<SecurityMode>{SecurityMode::wpaPsk, "WPA personal"},
    Text<SecurityMode>{SecurityMode::rsnPsk, "WPA2 personal"},
    Text<SecurityMode>{SecurityMode::sae, "WPA3 personal"},
    Text<SecurityMode>{SecurityMode::enterprise, "WPA enterprise"},
    Text<SecurityMode>{SecurityMode::enterpriseVariant, "WPA enterprise"},
    Text<SecurityMode>{SecurityMode::unsupported, "not supported"},
};

constexpr std::array statuses{
    Text<ConnectionInfo::Status>{ConnectionInfo::Status::disconnected, "not connected"},
    Text<ConnectionInfo::Status>{ConnectionInfo::Status::connectingWifi, "connecting"},
    Text<ConnectionInfo::Status>{ConnectionInfo::Status::connectingIP, "getting an address"},
    Text<ConnectionInfo::Status>{ConnectionInfo::Status::connected, "connected"},
};

// What a network asks for, by its first demand: hash-to-element and the like say more than WPA3 alone.
struct DemandText {
    bool NetworkDemands::*demand;
    const char* english;  // after "asks for"
    const char* advice;   // if this device cannot join it for that
};
constexpr const char* commonSecurity = "WPA2 or WPA3 personal at the access point";
constexpr std::array demands{
    DemandText{&NetworkDemands::adHoc, "ad-hoc mode", "a network with an access point"},
    DemandText{&NetworkDemands::hashToElement, "WPA3 with hash-to-element",
               "sae_pwe=2 in the configuration of wpa_supplicant"},
    DemandText{&NetworkDemands::sae, "WPA3 personal", commonSecurity},
    DemandText{&NetworkDemands::owe, "Enhanced Open", commonSecurity},
    DemandText{&NetworkDemands::rsnPskSha256, "WPA2 with SHA-256", commonSecurity},
    DemandText{&NetworkDemands::rsnPsk, "WPA2 personal", commonSecurity},
    DemandText{&NetworkDemands::wpaPsk, "WPA personal", commonSecurity},
    DemandText{&NetworkDemands::enterprise, "WPA enterprise", commonSecurity},
    DemandText{&NetworkDemands::wep, "a WEP key", commonSecurity},
    DemandText{&NetworkDemands::nothing, "no password", commonSecurity},
    DemandText{&NetworkDemands::other, "another kind of keys", commonSecurity},
};
constexpr const char* otherDemand = "something";

template <typename Value, std::size_t size>
const char* find(const std::array<Text<Value>, size>& table, Value value, const char* otherwise) {
    for (const auto& [each, english] : table) {
        if (each == value) {
            return english;
        }
    }
    return otherwise;
}

// Causes of a later version count as unknown.
const CauseText& textsOf(Cause cause) {
    for (const CauseText& each : causes) {
        if (each.cause == cause) {
            return each;
        }
    }
    return causes.front();
}

const DemandText* firstDemand(const NetworkDemands& of) {
    for (const DemandText& each : demands) {
        if (of.*each.demand) {
            return &each;
        }
    }
    return nullptr;
}

}  // namespace

Words::Words(Translator translator) : translator_(std::move(translator)) {}

std::string Words::in(const char* english) const {
    return translator_ ? translator_(english) : english;
}

std::string Words::in(const char* english, const std::string& argument) const {
    std::string text = in(english);
    if (const auto place = text.find("{}"); place != std::string::npos) {
        text.replace(place, 2, argument);
    }
    return text;
}

std::string Words::cause(const Outcome& outcome) const {
    if (outcome.cause == Cause::none) {
        return {};
    }
    const CauseText& texts = textsOf(outcome.cause);
    const char* const english = outcome.certainty == Certainty::certain ? texts.certain : texts.probable;
    const DemandText* const demand = firstDemand(outcome.evidence.demands);
    return in(english, in(demand == nullptr ? otherDemand : demand->english));
}

std::string Words::advice(const Outcome& outcome) const {
    if (outcome.cause == Cause::nothingInCommon && outcome.evidence.demands.hashToElement) {
        return advice(NetworkAccess{outcome.evidence.demands, SecurityMode::unsupported});
    }
    const char* const english = outcome.cause == Cause::none ? "" : textsOf(outcome.cause).advice;
    return *english == '\0' ? std::string() : in(english);
}

std::string Words::verdict(ConnectResult verdict, SecurityMode mode) const {
    if (verdict == ConnectResult::ok) {
        return {};
    }
    if (mode == SecurityMode::sae && verdict == ConnectResult::passwordTooShort) {
        return in(saePasswordEmpty);
    }
    if (mode == SecurityMode::sae && verdict == ConnectResult::passwordTooLong) {
        return in(saePasswordTooLong);
    }
    return in(find(verdicts, verdict, otherVerdict));
}

std::string Words::security(SecurityMode mode) const {
    return in(find(securities, mode, securities.back().english));
}

std::string Words::security(const NetworkAccess& access) const {
    const DemandText* const demand = firstDemand(access.demands);
    const bool obstacle = access.mode == SecurityMode::unsupported && demand != nullptr;
    return obstacle ? in(demand->english) : security(access.mode);
}

std::string Words::advice(const NetworkAccess& access) const {
    const DemandText* const demand = firstDemand(access.demands);
    const bool obstacle = access.mode == SecurityMode::unsupported && demand != nullptr;
    return obstacle ? in(demand->advice) : std::string();
}

std::string Words::status(ConnectionInfo::Status status) const {
    return in(find(statuses, status, statuses.front().english));
}

std::vector<std::string> Words::texts() {
    std::vector<std::string> all{saePasswordEmpty, saePasswordTooLong, otherVerdict, otherDemand};
    const auto add = [&all](const std::string& text) {
        if (!text.empty() && std::find(all.begin(), all.end(), text) == all.end()) {
            all.push_back(text);
        }
    };
    for (const CauseText& each : causes) {
        add(each.certain);
        add(each.probable);
        add(each.advice);
    }
    for (const auto& each : demands) {
        add(each.english);
        add(each.advice);
    }
    for (const auto& each : verdicts) {
        add(each.english);
    }
    for (const auto& each : securities) {
        add(each.english);
    }
    for (const auto& each : statuses) {
        add(each.english);
    }
    return all;
}

}  // namespace kaz::wifi::client
