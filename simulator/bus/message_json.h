#pragma once

#include <string>

#include "simulator/bus/handles.h"

namespace kaz::sim {

// The arguments of a message as a JSON array: dictionaries become objects, byte arrays arrays of numbers, and
// a variant is its value. The message is left rewound.
std::string argumentsAsJson(sd_bus_message* message);

}  // namespace kaz::sim
