#pragma once

#include <string_view>

namespace kaz::sim {

// In the order in which a connection reaches them.
enum class State {
    interfaceDisabled,
    disconnected,
    inactive,
    scanning,
    authenticating,
    associating,
    associated,
    fourWayHandshake,
    groupHandshake,
    completed,
};

// The supplicant's name of the state.
constexpr std::string_view toText(State state) {
    switch (state) {
        case State::interfaceDisabled:
            return "interface_disabled";
        case State::disconnected:
            return "disconnected";
        case State::inactive:
            return "inactive";
        case State::scanning:
            return "scanning";
        case State::authenticating:
            return "authenticating";
        case State::associating:
            return "associating";
        case State::associated:
            return "associated";
        case State::fourWayHandshake:
            return "4way_handshake";
        case State::groupHandshake:
            return "group_handshake";
        case State::completed:
            return "completed";
    }
    return "";
}

}  // namespace kaz::sim
