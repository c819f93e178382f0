#pragma once

#include "simulator/bus/handles.h"

#include <string>

namespace kaz::sim {

// The arguments of a message as a JSON array. Dictionaries become objects, byte arrays become arrays of
// numbers, variants become their values. The message is rewound afterwards.
std::string argumentsAsJson(sd_bus_message* message);

}  // namespace kaz::sim
