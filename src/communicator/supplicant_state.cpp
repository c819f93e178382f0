#include "communicator/supplicant_state.h"

#include "base/log.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kaz::wifi {
namespace {

using Status = Communicator::SupplicantConnectionStatus;

constexpr std::array<std::pair<std::string_view, Status>, 10> statusOfState{{
    {"disconnected", Status::Disconnected},
    {"inactive", Status::Disconnected},
    {"interface_disabled", Status::InterfaceDisabled},
    {"scanning", Status::Disconnected},
    {"authenticating", Status::Connecting},
    {"associating", Status::Connecting},
    {"associated", Status::Connecting},
    {"4way_handshake", Status::Connecting},
    {"group_handshake", Status::Connecting},
    {"completed", Status::Connected},
}};

}  // namespace

std::optional<Communicator::SupplicantConnectionStatus> fromSupplicantState(std::string_view state) {
    const auto* const entry = std::find_if(statusOfState.begin(), statusOfState.end(),
                                           [&](const auto& candidate) { return candidate.first == state; });
    if (entry == statusOfState.end()) {
        log::warn("wpa_supplicant in unknown state (\"{}\")", state);
        return std::nullopt;
    }
    return entry->second;
}

}  // namespace kaz::wifi
