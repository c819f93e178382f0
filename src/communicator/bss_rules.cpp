#include "communicator/bss_rules.h"

#include <algorithm>
#include <string_view>

namespace kaz::wifi {
namespace {

// An access point demands hash-to-element by a value among its rates that no device has.
constexpr unsigned int rateOfHashToElement = 61'500'000;

// The name of a pre-shared key is the same for WPA and WPA2. A suite for fast transition alone is another demand.
void addSuite(NetworkDemands& demands, std::string_view suite, bool& preSharedKey) {
    if (suite == "wpa-psk") {
        preSharedKey = true;
    } else if (suite == "wpa-psk-sha256") {
        demands.rsnPskSha256 = true;
    } else if (suite == "sae") {
        demands.sae = true;
    } else if (suite == "wpa-eap") {
        demands.enterprise = true;
    } else if (suite == "owe") {
        demands.owe = true;
    } else {
        demands.other = true;
    }
}

}  // namespace

std::string ssidOfBss(const std::vector<unsigned char>& announced) {
    const bool singleBlank = announced.size() == 1 && announced.front() == ' ';
    const bool onlyZeros =
        std::all_of(announced.begin(), announced.end(), [](unsigned char byte) { return byte == 0; });
    if (singleBlank || onlyZeros) {
        return {};
    }
    return {announced.begin(), announced.end()};
}

SecurityMode securityModeOfBss(const BSSData& bss) {
    const auto rsnHas = [&](const char* suite) { return bss.rsn.keyMgmt.contains(suite); };
    const auto wpaHas = [&](const char* suite) { return bss.wpa.keyMgmt.contains(suite); };
    // The order matters: RSN before WPA, and pre-shared keys before EAP.
    if (rsnHas("wpa-psk-sha256") || rsnHas("wpa-psk")) {
        return SecurityMode::rsnPsk;
    }
    if (rsnHas("wpa-eap")) {
        return SecurityMode::enterprise;
    }
    if (wpaHas("wpa-psk")) {
        return SecurityMode::wpaPsk;
    }
    if (wpaHas("wpa-eap")) {
        return SecurityMode::enterprise;
    }
    if (!bss.wpa.keyMgmt.empty() || !bss.rsn.keyMgmt.empty()) {
        return SecurityMode::unsupported;
    }
    if (!bss.privacy) {
        return SecurityMode::none;
    }
    return bss.rsn.group.empty() ? SecurityMode::wep : SecurityMode::unsupported;
}

NetworkDemands demandsOfBss(const BSSData& bss) {
    NetworkDemands demands;
    for (const std::string& suite : bss.wpa.keyMgmt) {
        addSuite(demands, suite, demands.wpaPsk);
    }
    for (const std::string& suite : bss.rsn.keyMgmt) {
        addSuite(demands, suite, demands.rsnPsk);
    }
    if (bss.wpa.keyMgmt.empty() && bss.rsn.keyMgmt.empty()) {
        const bool withoutKeys = bss.rsn.group.empty();
        demands.nothing = !bss.privacy && withoutKeys;
        demands.wep = bss.privacy && withoutKeys;
        demands.other = !withoutKeys;
    }
    if (const auto& rates = bss.rates.value) {
        demands.hashToElement = std::find(rates->begin(), rates->end(), rateOfHashToElement) != rates->end();
    }
    demands.adHoc = bss.mode.value == "ad-hoc";
    return demands;
}

Communicator::BssProperties propertiesOfBss(const BSSData& bss) {
    Communicator::BssProperties properties{ssidOfBss(bss.ssid), bss.signal, securityModeOfBss(bss)};
    properties.demands = demandsOfBss(bss);
    properties.frequency = bss.frequency.value.value_or(0);
    if (const auto& bssid = bss.bssid.value; bssid && bssid->size() == properties.bssid.size()) {
        std::copy(bssid->begin(), bssid->end(), properties.bssid.begin());
    }
    return properties;
}

}  // namespace kaz::wifi
