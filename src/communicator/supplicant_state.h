#pragma once

#include "communicator/communicator.h"

#include <optional>
#include <string_view>

namespace kaz::wifi {

// The step of link set-up that the supplicant's "State" means; nullopt for an unknown state.
std::optional<Communicator::LinkStep> linkStepOfState(std::string_view state);

// Maps the supplicant's "State" to a status. For an unknown state, logs a warning and returns nullopt.
std::optional<Communicator::SupplicantConnectionStatus> fromSupplicantState(std::string_view state);

}  // namespace kaz::wifi
