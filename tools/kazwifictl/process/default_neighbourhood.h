#pragma once

namespace kaz::ctl {

// What --simulate uses when it names no file: the text of simulator/neighbourhoods/home.json.
extern const char* const defaultNeighbourhood;

}  // namespace kaz::ctl
