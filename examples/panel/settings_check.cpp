#include "settings_check.h"

using kaz::wifi::ConnectResult;
using kaz::wifi::SecurityMode;

namespace {

ConnectResult checkLength(const std::string& password, std::size_t min, std::size_t max) {
    if (password.size() < min) {
        return ConnectResult::passwordTooShort;
    }
    return password.size() > max ? ConnectResult::passwordTooLong : ConnectResult::ok;
}

bool isOffered(const std::string& method, const std::set<std::string>& methods) {
    return method.empty() || methods.count(method) != 0;
}

}  // namespace

ConnectResult checkSettings(const kaz::wifi::ConnectionSettings& settings,
                            const std::set<std::string>& eapMethods,
                            const std::set<std::string>& phase2Methods) {
    if (settings.ssid.empty()) {
        return ConnectResult::ssidEmpty;
    }
    if (settings.ssid.size() > 32) {
        return ConnectResult::ssidTooLong;
    }
    switch (settings.securityMode) {
        case SecurityMode::none:
            return ConnectResult::ok;
        case SecurityMode::wep:
            return settings.password.size() == 5 || settings.password.size() == 13
                       ? ConnectResult::ok
                       : ConnectResult::wepKeyInvalidLength;
        case SecurityMode::wpaPsk:
        case SecurityMode::rsnPsk:
            return checkLength(settings.password, 8, 63);
        case SecurityMode::sae:
            return checkLength(settings.password, 1, 1024);
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            if (!isOffered(settings.eapMethod, eapMethods)) {
                return ConnectResult::eapMethodUnsupported;
            }
            return isOffered(settings.phase2Method, phase2Methods) ? ConnectResult::ok
                                                                   : ConnectResult::phase2MethodUnsupported;
        case SecurityMode::unsupported:
            break;
    }
    return ConnectResult::securityModeUnsupported;
}
