#pragma once

#include <optional>
#include <string>
#include <vector>

#include "failure.h"

namespace kaz::ctl {

// Runs this program again, without --simulate, over a simulated device of its own, in place of this process.
// `neighbourhood` is a file that tells what the device finds around it; empty: the built-in one. Returns only
// when that cannot be done.
Failure runSimulated(const std::string& neighbourhood, const std::vector<std::string>& arguments);

// The program of the simulated device: beside this one or in the build folder that it lies in, in the libexec
// folder, or in PATH. Nothing when it is nowhere.
std::optional<std::string> findSimulator();

}  // namespace kaz::ctl
