#include "manager/state_refresh.h"

#include <utility>

namespace kaz::wifi {

void StateRefresh::idle() {
    if (tracker_.attemptPending()) {
        return;
    }
    if (networksStale_) {
        networks_.post([this] {
            // The supplicant may have been detached meanwhile.
            if (std::exchange(networksStale_, false)) {
                list_.taskUpdateConfiguredNetworks();
            }
        });
    }
    if (bssListStale_) {
        bssList_.post([this] {
            bssListStale_ = false;
            communicator_.refreshBssListSync();
        });
    }
}

void StateRefresh::reported() {
    // Does nothing for the report of refreshSync() itself, which would repeat it for ever.
    if (tracker_.connectedToUnknownBss()) {
        post();
    }
}

void StateRefresh::timerCompleted() {
    if (tracker_.attemptStandsStill()) {
        post();
    }
}

void StateRefresh::post() {
    state_.post([this] {
        // The attempt may have ended meanwhile. Then the report of its network would count as a new attempt.
        if (tracker_.connectedToUnknownBss() || tracker_.attemptStandsStill()) {
            communicator_.refreshSync();
        }
    });
}

}  // namespace kaz::wifi
