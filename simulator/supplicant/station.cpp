#include "simulator/supplicant/station.h"

#include <utility>

namespace kaz::sim {
namespace {

constexpr int leavingReason = 3;     // IEEE 802.11: the station is leaving
constexpr int inactivityReason = 4;  // IEEE 802.11: inactivity

}  // namespace

Station::Station(const Scheduler& scheduler, const Neighbourhood& neighbourhood, NetworkList& networks,
                 Events events)
    : scheduler_(scheduler),
      neighbourhood_(neighbourhood),
      networks_(networks),
      events_(std::move(events)),
      table_(events_.bss) {}

void Station::start() {
    searchAfter(std::chrono::milliseconds(0));
}

void Station::select(Network& network) {
    const bool elsewhere = current_ && *current_ != network.id;
    if (elsewhere && connecting()) {
        leave(-leavingReason);
    }
    for (const auto& other : networks_.all()) {
        const bool enabled = other.get() == &network;
        if (other->config.enabled() != enabled) {
            other->config.setEnabled(enabled);
            events_.enabledChanged(*other);
        }
    }
    if (current_ == network.id) {
        return;
    }
    network.failures = 0;
    network.pausedUntil = {};
    failures_ = 0;
    current_ = network.id;
    toldToDisconnect_ = false;
    events_.networkSelected(network);
    constexpr std::chrono::milliseconds resultsStayValid{5000};
    if (!scanning_ && lastScan_ && scheduler_.now() - *lastScan_ < resultsStayValid && pick()) {
        searchTimer_ = scheduler_.soon([this] { useScanResults(); });
    } else {
        searchAfter(std::chrono::milliseconds(0));
    }
}

void Station::setEnabled(Network& network, bool enabled) {
    if (network.config.enabled() == enabled) {
        return;
    }
    network.config.setEnabled(enabled);
    events_.enabledChanged(network);
    if (enabled) {
        network.failures = 0;
        network.pausedUntil = {};
        if (!toldToDisconnect_ && !connecting() && !scanning_) {
            searchAfter(std::chrono::milliseconds(0));
        }
    } else if (current_ == network.id) {
        leave(-leavingReason);
        searchAfter(neighbourhood_.times.reconnect);
    }
}

void Station::remove(Network& network) {
    const bool wasCurrent = current_ == network.id;
    if (wasCurrent) {
        leave(-leavingReason);
    }
    networks_.remove(network.id);
    if (wasCurrent && !toldToDisconnect_) {
        searchAfter(neighbourhood_.times.reconnect);
    }
}

bool Station::disconnect() {
    if (!current_) {
        return false;
    }
    toldToDisconnect_ = true;
    searchTimer_.cancel();
    leave(-leavingReason);
    return true;
}

void Station::reconnect() {
    if (toldToDisconnect_) {
        toldToDisconnect_ = false;
        searchAfter(std::chrono::milliseconds(0));
    }
}

bool Station::reassociate() {
    toldToDisconnect_ = false;
    if (connecting()) {
        leave(-leavingReason);
    }
    searchAfter(std::chrono::milliseconds(0));
    return true;
}

void Station::flush(std::chrono::milliseconds age) {
    table_.flush(age, scheduler_.now(), currentBss());
}

void Station::deauthenticated(int reason) {
    if (connecting()) {
        leave(reason);
        searchAfter(neighbourhood_.times.reconnect);
    }
}

void Station::connectionLost() {
    deauthenticated(-inactivityReason);
}

void Station::accessPointsChanged() {
    if (!connecting() || reachedAccessPoint() != nullptr) {
        loss_.cancel();
    } else if (!loss_.pending()) {
        loss_ = scheduler_.after(neighbourhood_.times.beaconLoss, [this] { connectionLost(); });
    }
}

const AccessPoint* Station::associatedWith() const {
    return state_ >= State::associated ? reachedAccessPoint() : nullptr;
}

const AccessPoint* Station::reachedAccessPoint() const {
    const Bss* const bss = currentBss();
    return bss == nullptr ? nullptr : neighbourhood_.find(bss->seen.bssid);
}

}  // namespace kaz::sim
