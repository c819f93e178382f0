#pragma once

#include "simulator/world/neighbourhood.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kaz::sim {

// docs/simulator.md describes the format. On a wrong format every function throws std::runtime_error with a
// text that names the place. Unknown members are refused, so that a typing error is found.
Neighbourhood neighbourhoodFromJson(std::string_view text);
Neighbourhood readNeighbourhood(const std::filesystem::path& file);

// One member of "access_points". A missing bssid stays empty.
AccessPoint accessPointFromJson(std::string_view text);

// Changes the given members and keeps the rest. The BSSID cannot be changed.
void alterFromJson(AccessPoint& accessPoint, std::string_view text);

}  // namespace kaz::sim
