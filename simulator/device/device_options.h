#pragma once

#include "simulator/world/neighbourhood.h"

#include <filesystem>
#include <string>

namespace kaz::sim {

struct DeviceOptions {
    std::string busAddress = {};
    Neighbourhood neighbourhood = {};       // access points without a BSSID get one
    double timeScale = 1.0;                 // 0.01: the simulation is a hundred times faster
    std::filesystem::path configFile = {};  // read at start if it exists, written by SaveConfig; may be empty

    // Starts and stops the wpa_supplicant daemon of this machine, with its wired driver on a separate
    // network, instead of simulating it. Access points and the rest of the simulated radio then have no
    // effect.
    bool realSupplicant = false;
};

}  // namespace kaz::sim
