#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "simulator/world/neighbourhood.h"

namespace kaz::sim {

// The format is told in docs/simulator.md. Every function throws std::runtime_error with a text that names
// the place when what it reads is not that format; unknown members are refused, so that a typing error shows.
Neighbourhood neighbourhoodFromJson(std::string_view text);
Neighbourhood readNeighbourhood(const std::filesystem::path& file);

// One member of "access_points". A missing bssid stays empty.
AccessPoint accessPointFromJson(std::string_view text);

// Changes what the text's members name and leaves the rest. The BSSID cannot be changed.
void alterFromJson(AccessPoint& accessPoint, std::string_view text);

}  // namespace kaz::sim
