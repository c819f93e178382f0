#include "simulator/supplicant/credentials.h"

#include "base/hex.h"

#include <algorithm>

namespace kaz::sim {
namespace {

bool hasWepKey(const NetworkConfig& network) {
    return network.has("wep_key0") || network.has("wep_key1") || network.has("wep_key2") ||
           network.has("wep_key3");
}

bool usesSae(const NetworkConfig& network, Security security) {
    return security == Security::wpa3 ||
           (security == Security::wpa2Wpa3 && network.hasKeyword("key_mgmt", "SAE"));
}

// Compares a raw key with a password that consists of such a key's digits.
bool knowsPassphrase(const NetworkConfig& network, const std::string& password) {
    const auto bytes = network.bytes("psk");
    return network.has("psk") &&
           (network.text("psk").starts_with('"') ? bytes == password : bytes == fromHex(password));
}

bool knowsSaePassword(const NetworkConfig& network, const std::string& password) {
    return network.bytes(network.has("sae_password") ? "sae_password" : "psk") == password;
}

bool knowsWepKey(const NetworkConfig& network, const std::string& key) {
    const std::string index(network.text("wep_tx_keyidx"));
    const std::string bytes = network.bytes("wep_key" + index);
    return bytes == key || bytes == fromHex(key);
}

bool isDomainOrBelow(const std::string& domain, const std::string& wanted) {
    return domain == wanted ||
           (domain.ends_with(wanted) && domain.at(domain.size() - wanted.size() - 1) == '.');
}

// The network names a file of CAs, and a server's domain only with it.
bool trustsServer(const NetworkConfig& network, const AccessPoint& accessPoint) {
    return !network.has("ca_cert") ||
           (network.bytes("ca_cert") == accessPoint.caFile &&
            (!network.has("domain_suffix_match") ||
             isDomainOrBelow(accessPoint.serverDomain, network.bytes("domain_suffix_match"))));
}

bool letsIn(const EapAccount& account, const NetworkConfig& network) {
    const std::string phase2 = network.bytes("phase2");
    return account.identity == network.bytes("identity") && account.password == network.bytes("password") &&
           (account.method != "TLS" || network.has("private_key")) &&
           (account.method.empty() || !network.has("eap") || network.hasKeyword("eap", account.method)) &&
           (account.phase2.empty() || phase2.empty() || phase2.find(account.phase2) != std::string::npos);
}

Admission grantedIf(bool granted, Admission refused) {
    return granted ? Admission::granted : refused;
}

}  // namespace

bool suits(const NetworkConfig& network, const AccessPoint& accessPoint) {
    const auto uses = [&network](std::string_view keyManagement) {
        return network.hasKeyword("key_mgmt", keyManagement);
    };
    switch (accessPoint.security) {
        case Security::open:
            return uses("NONE") && !hasWepKey(network);
        case Security::wep:
            return uses("NONE") && hasWepKey(network);
        case Security::wpa:
        case Security::wpa2:
            return uses("WPA-PSK") && network.has("psk");
        case Security::wpa2Wpa3:
            return (uses("WPA-PSK") && network.has("psk")) || uses("SAE");
        case Security::wpa3:
            return uses("SAE");
        case Security::eap:
            return uses("WPA-EAP");
    }
    return false;
}

Admission admission(const NetworkConfig& network, const AccessPoint& accessPoint) {
    switch (accessPoint.security) {
        case Security::open:
            return Admission::granted;
        case Security::wep:
            return grantedIf(knowsWepKey(network, accessPoint.password), Admission::refusedAtAuthentication);
        case Security::wpa:
        case Security::wpa2:
        case Security::wpa2Wpa3:
        case Security::wpa3:
            if (usesSae(network, accessPoint.security)) {
                return grantedIf(knowsSaePassword(network, accessPoint.password),
                                 Admission::refusedAtAuthentication);
            }
            return grantedIf(knowsPassphrase(network, accessPoint.password), Admission::refusedAtHandshake);
        case Security::eap:
            if (!trustsServer(network, accessPoint)) {
                return Admission::serverNotTrusted;
            }
            return grantedIf(std::any_of(accessPoint.accounts.begin(), accessPoint.accounts.end(),
                                         [&](const EapAccount& account) { return letsIn(account, network); }),
                             Admission::refusedByServer);
    }
    return Admission::granted;
}

std::string authMode(const NetworkConfig& network, const AccessPoint& accessPoint) {
    if (usesSae(network, accessPoint.security)) {
        return "SAE";
    }
    switch (accessPoint.security) {
        case Security::open:
        case Security::wep:
            return "NONE";
        case Security::wpa:
            return "WPA-PSK";
        case Security::wpa2:
        case Security::wpa2Wpa3:
        case Security::wpa3:
            return "WPA2-PSK";
        case Security::eap:
            return "WPA2/IEEE 802.1X/EAP";
    }
    return "INACTIVE";
}

}  // namespace kaz::sim
