#pragma once

#include "simulator/bus/handles.h"
#include "simulator/world/setting.h"

namespace kaz::sim {

// Reads an a{sv} of network settings. Throws std::system_error if the message contains something else.
Settings readSettings(sd_bus_message* message);

}  // namespace kaz::sim
