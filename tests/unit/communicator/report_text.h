#pragma once

#include "communicator/communicator.h"

#include <string>

namespace kaz::wifi {

// What a report says, without what it does not mention: "scanning=true status=Connected". Payload that does
// not fit what it says shows, too. "nothing" for a report that says nothing.
std::string reportText(const Communicator::SupplicantInterfaceProperties& report);

// As "Home" -60 dBm rsnPsk.
std::string bssText(const Communicator::BssProperties& bss);

}  // namespace kaz::wifi
