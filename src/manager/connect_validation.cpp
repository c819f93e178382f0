#include "manager/connect_validation.h"

#include "base/sendable_text.h"

#include <cstddef>

namespace kaz::wifi {
namespace {

constexpr std::size_t minPskBytes = 8;
constexpr std::size_t maxPskBytes = 63;
constexpr std::size_t maxSaePasswordBytes = 1024;
constexpr std::size_t shortWepKeyBytes = 5;
constexpr std::size_t longWepKeyBytes = 13;

ConnectResult validateLength(const std::string& password, std::size_t min, std::size_t max) {
    if (password.size() < min) {
        return ConnectResult::passwordTooShort;
    }
    return password.size() > max ? ConnectResult::passwordTooLong : ConnectResult::ok;
}

ConnectResult validateWepKey(const std::string& key) {
    const bool valid = key.size() == shortWepKeyBytes || key.size() == longWepKeyBytes;
    return valid ? ConnectResult::ok : ConnectResult::wepKeyInvalidLength;
}

// An empty method leaves the choice to the supplicant and the network.
bool isOffered(const std::string& method, const std::set<std::string>& offered) {
    return method.empty() || offered.contains(method);
}

bool takesPassword(SecurityMode mode) {
    return mode >= SecurityMode::wep && mode <= SecurityMode::enterpriseVariant;
}

bool isEnterprise(SecurityMode mode) {
    return mode == SecurityMode::enterprise || mode == SecurityMode::enterpriseVariant;
}

}  // namespace

bool isSendable(const ConnectionSettings& settings, const Certificates& certificates) {
    const SecurityMode mode = settings.securityMode;
    return isSendableText(settings.ssid) && (!takesPassword(mode) || isSendableText(settings.password)) &&
           (!isEnterprise(mode) ||
            (isSendableText(settings.identity) && isSendableText(settings.anonymousIdentity) &&
             isSendableText(certificates.keyPassword)));
}

ConnectResult validateConnectionSettings(const ConnectionSettings& settings,
                                         const std::set<std::string>& eapMethods,
                                         const std::set<std::string>& phase2Methods) {
    if (settings.ssid.empty()) {
        return ConnectResult::ssidEmpty;
    }
    if (settings.ssid.size() > MaxSsidBytes) {
        return ConnectResult::ssidTooLong;
    }
    switch (settings.securityMode) {
        case SecurityMode::none:
            return ConnectResult::ok;
        case SecurityMode::wep:
            return validateWepKey(settings.password);
        case SecurityMode::wpaPsk:
        case SecurityMode::rsnPsk:
            return validateLength(settings.password, minPskBytes, maxPskBytes);
        case SecurityMode::sae:
            return validateLength(settings.password, 1, maxSaePasswordBytes);
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            if (!isOffered(settings.eapMethod, eapMethods)) {
                return ConnectResult::eapMethodUnsupported;
            }
            return isOffered(settings.phase2Method, phase2Methods) ? ConnectResult::ok
                                                                   : ConnectResult::phase2MethodUnsupported;
        case SecurityMode::unsupported:
            return ConnectResult::securityModeUnsupported;
    }
    return ConnectResult::ok;
}

}  // namespace kaz::wifi
