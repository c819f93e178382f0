#pragma once

#include <chrono>

#include "inspection/facts.h"

namespace kaz::inspection {

// Fills in what the bus and the daemons on it say.
void readBus(Facts& facts, std::chrono::milliseconds limit);

}  // namespace kaz::inspection
