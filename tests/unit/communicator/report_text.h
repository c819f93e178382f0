#pragma once

#include "communicator/communicator.h"

#include <string>

namespace kaz::wifi {

// The text of a report: "scanning=true status=Connected". It omits unset fields, and is "nothing" for an empty report. A
// value without its change is shown too.
std::string reportText(const Communicator::SupplicantInterfaceProperties& report);

// As "Home" -60 dBm rsnPsk.
std::string bssText(const Communicator::BssProperties& bss);

}  // namespace kaz::wifi
