#include "kazwifictl/commands/saved_networks.h"

#include <algorithm>
#include <chrono>

#include "inspection/bus_facts.h"
#include "inspection/facts.h"

namespace kaz::ctl {

std::optional<std::vector<std::string>> savedSsids() {
    constexpr std::chrono::milliseconds limit{1200};
    inspection::Facts facts;
    inspection::readBus(facts, limit);
    if (!facts.supplicant.isKnown() || facts.supplicant->interfaces.empty()) {
        return std::nullopt;
    }
    const auto& networks = facts.supplicant->interfaces.front().networks;
    if (!networks.isKnown()) {
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (const inspection::Network& network : *networks) {
        if (network.ssid && std::find(names.begin(), names.end(), *network.ssid) == names.end()) {
            names.push_back(*network.ssid);
        }
    }
    return names;
}

}  // namespace kaz::ctl
