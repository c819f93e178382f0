#include "simulator/supplicant/credentials.h"
#include "simulator/supplicant/station.h"

#include <algorithm>
#include <utility>

namespace kaz::sim {

bool Station::scan(std::set<std::string> ssids) {
    if (scanning_) {
        return false;
    }
    searchTimer_.cancel();
    scanning_ = true;
    if (state_ == State::disconnected || state_ == State::inactive) {
        setState(State::scanning);
    }
    events_.changed("Scanning");
    scanTimer_ =
        scheduler_.after(neighbourhood_.times.scan, [this, asked = std::move(ssids)] { finishScan(asked); });
    return true;
}

void Station::searchAfter(std::chrono::milliseconds delay) {
    searchTimer_ = scheduler_.after(delay, [this] { search(); });
}

void Station::search() {
    if (toldToDisconnect_ || connecting() || scanning_) {
        return;
    }
    if (anyEnabled()) {
        scan({});
    } else {
        setState(State::inactive);
    }
}

void Station::finishScan(const std::set<std::string>& ssids) {
    std::set<std::string> askedFor = ssids;
    for (const auto& network : networks_.all()) {
        if (network->config.enabled() && network->config.number("scan_ssid") == 1) {
            askedFor.insert(network->config.ssid());
        }
    }
    scanning_ = false;
    lastScan_ = scheduler_.now();
    events_.changed("Scanning");
    table_.update(neighbourhood_, askedFor, *lastScan_, currentBss());
    events_.scanDone(true);
    useScanResults();
}

void Station::useScanResults() {
    if (connecting()) {
        return;
    }
    if (toldToDisconnect_) {
        setState(State::disconnected);
    } else if (const auto candidate = pick()) {
        connect(*candidate);
    } else {
        searchAfter(neighbourhood_.times.scanInterval);
    }
}

std::optional<Station::Candidate> Station::pick() const {
    const Network* best = nullptr;
    const Bss* bestBss = nullptr;
    for (const auto& network : networks_.all()) {
        const Bss* const bss = tryable(*network) ? strongestFor(*network) : nullptr;
        if (bss == nullptr) {
            continue;
        }
        const auto rank = [](const Network& n, const Bss& b) {
            return std::pair(n.config.number("priority"), b.seen.signal);
        };
        if (best == nullptr || rank(*network, *bss) > rank(*best, *bestBss)) {
            best = network.get();
            bestBss = bss;
        }
    }
    return best == nullptr ? std::nullopt : std::optional(Candidate{best->id, bestBss->id});
}

const Bss* Station::strongestFor(const Network& network) const {
    const Bss* strongest = nullptr;
    const std::string ssid = network.config.ssid();
    for (const auto& bss : table_.all()) {
        const bool fits =
            bss->scansMissed == 0 && !ssid.empty() && bss->ssid == ssid && suits(network.config, bss->seen);
        if (fits && (strongest == nullptr || bss->seen.signal > strongest->seen.signal)) {
            strongest = bss.get();
        }
    }
    return strongest;
}

bool Station::tryable(const Network& network) const {
    return network.config.enabled() && network.pausedUntil <= scheduler_.now();
}

bool Station::anyEnabled() const {
    const auto& all = networks_.all();
    return std::any_of(all.begin(), all.end(), [](const auto& network) { return network->config.enabled(); });
}

}  // namespace kaz::sim
