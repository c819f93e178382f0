#include "communicator/network_settings.h"

namespace kaz::wifi {
namespace {

// Values of "ieee80211w".
constexpr int managementFrameProtectionOptional = 1;
constexpr int managementFrameProtectionRequired = 2;

void addEnterpriseSettings(dbus::Variant::Map& map, const ConnectionSettings& settings) {
    map.emplace("key_mgmt", "WPA-EAP");
    map.emplace("identity", settings.identity);
    map.emplace("password", settings.password);
    if (!settings.anonymousIdentity.empty()) {
        map.emplace("anonymous_identity", settings.anonymousIdentity);
    }
    if (!settings.eapMethod.empty()) {
        map.emplace("eap", settings.eapMethod);
    }
    if (!settings.phase2Method.empty()) {
        map.emplace("phase2", "auth=" + settings.phase2Method);
    }
    // Many networks still authenticate with nothing newer than TLS 1.0 or 1.1.
    map.emplace("phase1", "tls_disable_tlsv1_0=0 tls_disable_tlsv1_1=0");
    map.emplace("ieee80211w", managementFrameProtectionOptional);
}

// The names of files are sent as they are: the supplicant opens them.
void addCertificates(dbus::Variant::Map& map, const Certificates& certificates) {
    const auto addIfGiven = [&map](const char* key, const std::string& value) {
        if (!value.empty()) {
            map.emplace(key, value);
        }
    };
    addIfGiven("ca_cert", certificates.caFile);
    addIfGiven("domain_suffix_match", certificates.serverDomain);
    addIfGiven("client_cert", certificates.clientFile);
    addIfGiven("private_key", certificates.keyFile);
    if (!certificates.keyFile.empty()) {
        addIfGiven("private_key_passwd", certificates.keyPassword);
    }
}

void addSecuritySettings(dbus::Variant::Map& map, const ConnectionSettings& settings,
                         const Certificates& certificates) {
    switch (settings.securityMode) {
        case SecurityMode::none:
            map.emplace("key_mgmt", "NONE");
            map.emplace("auth_alg", "OPEN");
            break;
        case SecurityMode::wep:
            map.emplace("key_mgmt", "NONE");
            map.emplace("wep_key0", settings.password);
            break;
        case SecurityMode::wpaPsk:
        case SecurityMode::rsnPsk:
            map.emplace("key_mgmt", "WPA-PSK");
            map.emplace("psk", settings.password);
            map.emplace("ieee80211w", managementFrameProtectionOptional);
            break;
        case SecurityMode::sae:
            map.emplace("key_mgmt", "SAE");
            map.emplace("sae_password", settings.password);
            map.emplace("ieee80211w", managementFrameProtectionRequired);
            break;
        case SecurityMode::enterprise:
        case SecurityMode::enterpriseVariant:
            addEnterpriseSettings(map, settings);
            addCertificates(map, certificates);
            break;
        case SecurityMode::unsupported:
            break;
    }
}

}  // namespace

dbus::Variant::Map networkSettings(const ConnectionSettings& settings, const Certificates& certificates) {
    dbus::Variant::Map map;
    map.emplace("ssid", settings.ssid);
    if (settings.hidden) {
        map.emplace("scan_ssid", 1);
    }
    addSecuritySettings(map, settings, certificates);
    return map;
}

}  // namespace kaz::wifi
