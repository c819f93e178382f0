#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "simulator/supplicant/network_config.h"

namespace kaz::sim {

// What the supplicant keeps over its restarts.
struct SavedConfig {
    bool updateConfig = true;
    std::vector<NetworkConfig> networks;
};

// The file in the supplicant's own format. Lines it does not know are passed over; a network with a field
// that is unknown or cannot be is left out. Throws std::runtime_error when the file cannot be read.
SavedConfig readConfig(const std::filesystem::path& file, const std::vector<std::string>& eapMethods);

// Writes beside the file and renames, so that there is always an old or a new one. Throws std::runtime_error.
void writeConfig(const std::filesystem::path& file, const SavedConfig& config);

}  // namespace kaz::sim
