#pragma once

#include "simulator/bus/values.h"
#include "simulator/world/setting.h"

namespace kaz::sim {

// Network settings are an a{sv}. Throws std::system_error if the message contains something else.
template <>
struct Wire<Settings> {
    static constexpr char signature[] = "a{sv}";

    static Settings read(sd_bus_message* message);
};

}  // namespace kaz::sim
