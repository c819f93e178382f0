#pragma once

#include <vector>

#include "doctor/finding.h"
#include "inspection/facts.h"

namespace kaz::doctor {

// One finding per link of the chain, or several when more than one thing is wrong with it. The worst come first, and
// among equals the causes. What an earlier broken link explains is not reported as another fault.
std::vector<Finding> diagnose(const inspection::Facts& facts);

bool isHealthy(const std::vector<Finding>& findings);

}  // namespace kaz::doctor
