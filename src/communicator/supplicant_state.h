#pragma once

#include "communicator/communicator.h"

#include <optional>
#include <string_view>

namespace kaz::wifi {

// Maps the supplicant's "State" to a status. An unknown state returns nothing and logs a warning.
std::optional<Communicator::SupplicantConnectionStatus> fromSupplicantState(std::string_view state);

}  // namespace kaz::wifi
