#include "manager/state_refresh.h"

namespace kaz::wifi {

void StateRefresh::scanEnded() {
    if (bssListPosted_) {
        return;
    }
    bssListPosted_ = true;
    communicator_.pushTaskAsync_([this] {
        bssListPosted_ = false;
        communicator_.refreshBssListSync();
    });
}

void StateRefresh::reported() {
    // Not for the report of refreshSync() itself, which would repeat it for ever.
    if (refreshing_ || !tracker_.connectedToUnknownBss()) {
        return;
    }
    refreshing_ = true;
    communicator_.pushTaskAsync_([this] { refresh(); });
}

void StateRefresh::timerCompleted() {
    if (!refreshing_ && tracker_.attemptStandsStill()) {
        refreshing_ = true;
        refresh();
    }
}

void StateRefresh::refresh() {
    communicator_.refreshSync();
    refreshing_ = false;
}

}  // namespace kaz::wifi
