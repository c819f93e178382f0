#pragma once

#include "simulator/bus/faults.h"
#include "simulator/bus/handles.h"

namespace kaz::sim {

// Replies to the call as the fault requires, for the kinds that reply at once.
void spoiltReply(const Fault& fault, sd_bus_message* call);

}  // namespace kaz::sim
