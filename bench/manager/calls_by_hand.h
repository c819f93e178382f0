#pragma once

#include <cstddef>
#include <string>

namespace kaz::bench {

// Connects to the bus and makes, over sd-bus in a loop, the calls that a Manager makes until its first list,
// in the same order. Makes the sorted list and returns its size. Throws std::runtime_error on failure.
std::size_t listNetworksByHand(const std::string& busAddress);

}  // namespace kaz::bench
