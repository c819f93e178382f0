#pragma once

#include "simulator/bus/call_log.h"
#include "simulator/bus/faults.h"

#include <string>
#include <string_view>
#include <vector>

namespace kaz::sim {

// The JSON of the control interface. Throws std::runtime_error for a text that describes no fault.
Fault faultFromJson(std::string_view text);
std::string callsAsJson(const std::vector<Call>& calls);

}  // namespace kaz::sim
