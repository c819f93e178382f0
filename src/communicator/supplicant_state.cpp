#include "communicator/supplicant_state.h"

#include "base/log.h"

#include <algorithm>
#include <array>

namespace kaz::wifi {
namespace {

using Status = Communicator::SupplicantConnectionStatus;
using Step = Communicator::LinkStep;

struct State {
    std::string_view name;
    Status status;
    Step step;
};

constexpr std::array<State, 10> states{{
    {"disconnected", Status::Disconnected, Step::down},
    {"inactive", Status::Disconnected, Step::down},
    {"interface_disabled", Status::InterfaceDisabled, Step::down},
    {"scanning", Status::Disconnected, Step::down},
    {"authenticating", Status::Connecting, Step::authenticating},
    {"associating", Status::Connecting, Step::associating},
    {"associated", Status::Connecting, Step::associated},
    {"4way_handshake", Status::Connecting, Step::keyExchange},
    {"group_handshake", Status::Connecting, Step::keyExchange},
    {"completed", Status::Connected, Step::up},
}};

const State* find(std::string_view name) {
    const auto* const found =
        std::find_if(states.begin(), states.end(), [&](const State& state) { return state.name == name; });
    return found == states.end() ? nullptr : found;
}

}  // namespace

std::optional<Communicator::SupplicantConnectionStatus> fromSupplicantState(std::string_view state) {
    if (const State* const known = find(state)) {
        return known->status;
    }
    log::warn("wpa_supplicant in unknown state (\"{}\")", state);
    return std::nullopt;
}

std::optional<Communicator::LinkStep> linkStepOfState(std::string_view state) {
    const State* const known = find(state);
    return known == nullptr ? std::nullopt : std::optional(known->step);
}

}  // namespace kaz::wifi
