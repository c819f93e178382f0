/// @file
/// What it takes to join a network in range.
#pragma once

#include <wifi/connection_details.h>
#include <wifi/types.h>

namespace kaz::wifi {

/// What a network asks for, and whether this device can join it.
struct NetworkAccess {
    NetworkDemands demands;  ///< of all its access points in range
    /// The mode with which Manager::connect joins it, also `sae`. `unsupported`: this device cannot join it, and
    /// `demands` says why. `hashToElement` counts as such a reason only if the supplicant said that it lacks it.
    SecurityMode mode = SecurityMode::unsupported;

    friend bool operator==(const NetworkAccess& a, const NetworkAccess& b) {
        return a.demands == b.demands && a.mode == b.mode;
    }
    friend bool operator!=(const NetworkAccess& a, const NetworkAccess& b) { return !(a == b); }
};

}  // namespace kaz::wifi
