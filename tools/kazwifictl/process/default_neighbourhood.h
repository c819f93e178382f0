#pragma once

namespace kaz::ctl {

// The simulated device's surroundings when none are named: simulator/neighbourhoods/home.json.
extern const char* const defaultNeighbourhood;

}  // namespace kaz::ctl
