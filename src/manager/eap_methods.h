#pragma once

#include <set>
#include <string>

namespace kaz::wifi {

// The methods that connect() accepts, of those that the supplicant offers.
std::set<std::string> usableEapMethods(const std::set<std::string>& offered);

// The inner methods that connect() accepts, whatever the supplicant offers.
const std::set<std::string>& phase2Methods();

}  // namespace kaz::wifi
