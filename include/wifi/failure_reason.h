/// @file
/// Why a daemon did not do what was asked of it, as far as the bus told.
#pragma once

#include <cstdint>

namespace kaz::wifi {

/// Why a request failed, or why the supplicant cannot be used. Later versions may add values.
enum class FailureReason : std::int32_t {
    none = 0,         ///< nothing failed, or there is nothing to add
    unknown = 1,      ///< a call failed, and the platform's D-Bus library does not tell why
    noBus = 2,        ///< the system bus cannot be reached
    notOnBus = 3,     ///< the daemon is not on the system bus
    denied = 4,       ///< the daemon, or the policy of the bus, does not allow it to this user
    noAnswer = 5,     ///< the daemon did not answer in time
    unitMissing = 6,  ///< systemd knows no unit wpa_supplicant.service
    unitMasked = 7,   ///< the unit wpa_supplicant.service is masked
    refused = 8,      ///< the daemon answered with another error
};

/// Why Manager::isWifiStackInitialized() is false, although Wi-Fi may be switched on.
struct StackTrouble {
    /// What stands in the way. Later versions may add values.
    enum class Place : std::int32_t {
        none = 0,        ///< nothing is known to: the supplicant can be used, or its unit is not active
        bus = 1,         ///< the system bus
        systemd = 2,     ///< systemd, which does not tell whether the supplicant's unit is active
        supplicant = 3,  ///< the supplicant, whose unit is active, but which does not list its interfaces
        interface = 4,   ///< the supplicant has no interface that can be used
    };

    Place place = Place::none;                   ///< what stands in the way
    FailureReason reason = FailureReason::none;  ///< of systemd and the supplicant: why

    friend bool operator==(const StackTrouble& a, const StackTrouble& b) {
        return a.place == b.place && a.reason == b.reason;
    }
    friend bool operator!=(const StackTrouble& a, const StackTrouble& b) { return !(a == b); }
};

}  // namespace kaz::wifi
