#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "inspection/facts.h"

namespace kaz::inspection {

// Where to look.
struct Places {
    std::filesystem::path root = "/";  // of /proc, /sys, /etc and all other files
    std::string choiceFile;            // under `root`; empty: where the library keeps the choice
    bool kernel = true;                // whether to ask the kernel about its radios, too
    std::chrono::milliseconds limit{1200};
};

// The whole machine. A process with the variable KAZ_DEVICE_ROOT sees this folder in the place of /, and nothing of the
// kernel: that is how a simulated device is looked at.
Places placesOfEnvironment();

// Reads everything, as the user of this process. Changes nothing, and starts no service. All calls on the bus are in
// flight at the same time, and those without a reply after `limit` end. Throws only std::bad_alloc.
Facts inspect(const Places& places = placesOfEnvironment());

}  // namespace kaz::inspection
