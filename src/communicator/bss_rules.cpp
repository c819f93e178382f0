#include "communicator/bss_rules.h"

#include <algorithm>

namespace kaz::wifi {

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

}  // namespace kaz::wifi
