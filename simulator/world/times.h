#pragma once

#include <chrono>

namespace kaz::sim {

// How long things take on a device of flesh and blood, before the time scale is applied.
struct Times {
    using ms = std::chrono::milliseconds;

    ms unitStart{400};
    ms unitStop{200};
    ms unitRestart{1000};  // the pause before an automatic restart
    ms scan{2500};
    ms scanInterval{5000};  // between scans while looking for a network
    ms authenticate{60};
    ms associate{80};
    ms handshake{120};          // until it begins, and each of its two parts
    ms handshakeTimeout{4000};  // until a wrong key shows
    ms eap{800};
    ms reconnect{100};        // from a lost connection to the scan that follows
    ms retryDisabled{10000};  // the first pause of a network that refused us
    ms beaconLoss{3000};
    ms dhcp{1500};
};

}  // namespace kaz::sim
