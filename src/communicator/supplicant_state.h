#pragma once

#include "communicator/communicator.h"

#include <optional>
#include <string_view>

namespace kaz::wifi {

// What a "State" of the supplicant comes down to. A text that is none of its states gives nothing, and a
// warning in the log.
std::optional<Communicator::SupplicantConnectionStatus> fromSupplicantState(std::string_view state);

}  // namespace kaz::wifi
