#include "vm/supplicant_file.h"

#include <algorithm>
#include <fstream>

namespace kaz::vm {

std::vector<SavedNetwork> savedNetworks() {
    std::ifstream file("/etc/wpa_supplicant/device.conf");
    std::vector<SavedNetwork> result;
    bool inside = false;
    for (std::string line; std::getline(file, line);) {
        if (line == "network={") {
            inside = true;
            result.emplace_back();
        } else if (line == "}") {
            inside = false;
        } else if (const std::size_t equals = line.find('='); inside && equals != std::string::npos) {
            const std::size_t begin = line.find_first_not_of(" \t");
            result.back()[line.substr(begin, equals - begin)] = line.substr(equals + 1);
        }
    }
    return result;
}

std::optional<SavedNetwork> savedNetwork(const std::string& ssid) {
    std::vector<SavedNetwork> all = savedNetworks();
    const auto others = std::remove_if(all.begin(), all.end(), [&](const SavedNetwork& network) {
        const auto found = network.find("ssid");
        return found == network.end() || found->second != '"' + ssid + '"';
    });
    all.erase(others, all.end());
    return all.size() == 1 ? std::optional(all.front()) : std::nullopt;
}

}  // namespace kaz::vm
