#pragma once

#include "simulator/bus/handles.h"
#include "simulator/world/setting.h"

namespace kaz::sim {

// Reads an a{sv} of network settings. Throws std::system_error when the message holds something else.
Settings readSettings(sd_bus_message* message);

}  // namespace kaz::sim
