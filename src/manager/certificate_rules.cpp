#include "manager/certificate_rules.h"

#include "base/sendable_text.h"
#include "manager/connect_validation.h"

#include <cstddef>
#include <string_view>

namespace kaz::wifi {
namespace {

// The supplicant writes a text that is not ASCII in hexadecimal digits, and reads lines of 2000 bytes at most.
constexpr std::size_t maxTextBytes = 900;

// Certificates change nothing for a network that is not enterprise.
bool areUsed(const Certificates& certificates, const ConnectionSettings& settings) {
    const bool enterprise = settings.securityMode == SecurityMode::enterprise ||
                            settings.securityMode == SecurityMode::enterpriseVariant;
    return enterprise && !(certificates.caFile.empty() && certificates.serverDomain.empty() &&
                           certificates.clientFile.empty() && certificates.keyFile.empty());
}

// What begins with a slash is also none of the supplicant's other forms, such as "probe://", which verifies nothing.
bool isEmptyOrPath(const std::string& text) {
    return text.empty() || (text.front() == '/' && text.size() <= maxTextBytes && isSendableText(text));
}

bool isEmptyOrDomain(const std::string& text) {
    constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.;";
    return text.size() <= maxTextBytes && text.find_first_not_of(allowed) == std::string::npos;
}

bool lacksKey(const Certificates& certificates, const ConnectionSettings& settings) {
    return certificates.keyFile.empty() && (!certificates.clientFile.empty() || settings.eapMethod == "TLS");
}

ConnectResult validateCertificates(const Certificates& certificates, const ConnectionSettings& settings) {
    if (!isEmptyOrPath(certificates.caFile) || !isEmptyOrPath(certificates.clientFile) ||
        !isEmptyOrPath(certificates.keyFile)) {
        return ConnectResult::fileInvalid;
    }
    if (certificates.caFile.empty() && !certificates.serverDomain.empty()) {
        return ConnectResult::caFileMissing;
    }
    if (!isEmptyOrDomain(certificates.serverDomain)) {
        return ConnectResult::serverDomainInvalid;
    }
    return lacksKey(certificates, settings) ? ConnectResult::keyFileMissing : ConnectResult::ok;
}

}  // namespace

ConnectResult validateWithCertificates(const ConnectionSettings& settings, const Certificates& certificates,
                                       const AcceptedMethods& available) {
    if (!areUsed(certificates, settings)) {
        return validateConnectionSettings(settings, available.plain, phase2Methods());
    }
    const ConnectResult verdict =
        validateConnectionSettings(settings, available.withCertificates, phase2Methods());
    if (verdict != ConnectResult::ok) {
        return verdict;
    }
    return eapMethodsToAllow(settings, certificates, available).empty()
               ? ConnectResult::eapMethodUnsupported
               : validateCertificates(certificates, settings);
}

std::string eapMethodsToAllow(const ConnectionSettings& settings, const Certificates& certificates,
                              const AcceptedMethods& available) {
    if (!settings.eapMethod.empty() || !areUsed(certificates, settings)) {
        return settings.eapMethod;
    }
    const auto& methods = available.withCertificates;
    if (!certificates.keyFile.empty()) {
        return methods.contains("TLS") ? "TLS" : "";
    }
    const std::string peap = methods.contains("PEAP") ? "PEAP" : "";
    const std::string ttls = methods.contains("TTLS") ? "TTLS" : "";
    return peap.empty() || ttls.empty() ? peap + ttls : peap + ' ' + ttls;
}

}  // namespace kaz::wifi
