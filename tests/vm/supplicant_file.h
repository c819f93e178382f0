#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kaz::vm {

// One network={...} block of the supplicant's configuration: the texts as they stand in the file.
using SavedNetwork = std::map<std::string, std::string>;

std::vector<SavedNetwork> savedNetworks();

// The one with this SSID (without quotes). None when there is not exactly one.
std::optional<SavedNetwork> savedNetwork(const std::string& ssid);

}  // namespace kaz::vm
