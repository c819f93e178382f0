#pragma once

#include <chrono>

namespace kaz::sim {

// Times of a real device, before the time scale is applied.
struct Times {
    using ms = std::chrono::milliseconds;

    ms unitStart{400};
    ms unitStop{200};
    ms unitRestart{1000};  // the pause before an automatic restart
    ms scan{2500};
    ms scanInterval{5000};  // between scans while searching for a network
    ms authenticate{60};
    ms associate{80};
    ms handshake{120};          // until it begins, and for each of its two parts
    ms handshakeTimeout{4000};  // until a wrong key is detected
    ms eap{800};
    ms reconnect{100};        // from the loss of a connection to the next scan
    ms retryDisabled{10000};  // the first pause of a network after a refusal
    ms beaconLoss{3000};
    ms dhcp{1500};
};

}  // namespace kaz::sim
