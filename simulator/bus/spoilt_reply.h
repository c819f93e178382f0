#pragma once

#include "simulator/bus/faults.h"
#include "simulator/bus/handles.h"

namespace kaz::sim {

// Answers the call as the fault wants it, for the kinds that answer at once.
void spoiltReply(const Fault& fault, sd_bus_message* call);

}  // namespace kaz::sim
