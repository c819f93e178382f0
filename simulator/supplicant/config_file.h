#pragma once

#include "simulator/supplicant/network_config.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kaz::sim {

// What the supplicant keeps across a restart.
struct SavedConfig {
    bool updateConfig = true;
    std::string country = {};
    std::vector<NetworkConfig> networks;
};

// Reads a file in the supplicant's format. Ignores unknown lines, and leaves out a network with an unknown or
// invalid field. Throws std::runtime_error when the file cannot be read.
SavedConfig readConfig(const std::filesystem::path& file, const std::vector<std::string>& eapMethods);

// Replaces the file atomically. Throws std::runtime_error on failure.
void writeConfig(const std::filesystem::path& file, const SavedConfig& config);

}  // namespace kaz::sim
