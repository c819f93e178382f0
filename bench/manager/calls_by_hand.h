#pragma once

#include <cstddef>
#include <string>

namespace kaz::bench {

// Connects to the bus and makes, over sd-bus and in a loop, the calls that a Manager makes until it has its first
// list, in the same order; ends with that list, sorted. Returns its size. Throws std::runtime_error.
std::size_t listNetworksByHand(const std::string& busAddress);

}  // namespace kaz::bench
