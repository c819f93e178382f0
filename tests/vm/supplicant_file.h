#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kaz::vm {

// One network={...} block of the supplicant's configuration, with the texts of the file.
using SavedNetwork = std::map<std::string, std::string>;

std::vector<SavedNetwork> savedNetworks();

// The block with this SSID (without quotes). Empty unless there is exactly one.
std::optional<SavedNetwork> savedNetwork(const std::string& ssid);

}  // namespace kaz::vm
