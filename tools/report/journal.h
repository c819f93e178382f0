#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "inspection/fact.h"

namespace kaz::report {

// The newest records of these units, oldest first, each with its time in UTC and the unit's program.
inspection::Fact<std::vector<std::string>> lastRecords(const std::vector<std::string>& units,
                                                       std::size_t most);

}  // namespace kaz::report
