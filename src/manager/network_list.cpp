#include "manager/network_list.h"

#include "base/log.h"
#include "outcome/verdict.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kaz::wifi {
namespace {

// A device joins by any access point. So all of them must restrict it, but one suffices to let it in.
NetworkDemands anyOf(NetworkDemands all, const NetworkDemands& one) {
    const bool first = all == NetworkDemands{};
    all.hashToElement = one.hashToElement && (first || all.hashToElement);
    all.adHoc = one.adHoc && (first || all.adHoc);
    all.nothing = all.nothing || one.nothing;
    all.wep = all.wep || one.wep;
    all.wpaPsk = all.wpaPsk || one.wpaPsk;
    all.rsnPsk = all.rsnPsk || one.rsnPsk;
    all.rsnPskSha256 = all.rsnPskSha256 || one.rsnPskSha256;
    all.sae = all.sae || one.sae;
    all.enterprise = all.enterprise || one.enterprise;
    all.owe = all.owe || one.owe;
    all.other = all.other || one.other;
    return all;
}

}  // namespace

void NetworkList::setBssList(std::vector<Communicator::BssProperties> list) {
    bssList_ = std::move(list);
    networksDirty_ = true;
}

void NetworkList::setConnection(const ConnectionInfo& info) {
    if (info.status == ConnectionInfo::Status::disconnected) {
        ssidInUse_.reset();
    } else {
        ssidInUse_.emplace(info.ssid);
    }
    networksDirty_ = true;
}

void NetworkList::setHashToElement(bool able) {
    networksDirty_ = networksDirty_ || hashToElement_ != able;
    hashToElement_ = able;
}

void NetworkList::supplicantDetached() {
    bssList_.clear();
    hashToElement_.reset();
    configuredSsids_.clear();
    networksDirty_ = true;
}

void NetworkList::taskUpdateConfiguredNetworks() {
    std::set<std::string> ssids;
    for (const auto& network : communicator_.getAllConfiguredNetworksSync()) {
        if (const auto& ssid = network->getSsid()) {
            ssids.insert(*ssid);
        }
    }
    configuredSsids_ = std::move(ssids);
    networksDirty_ = true;
}

void NetworkList::taskUpdateNetworks() {
    if (!networksDirty_) {
        return;
    }
    networksDirty_ = false;
    NetworkAccessBySsid access = currentAccess();
    if (access != access_) {
        published_.publish(access);
        access_ = std::move(access);
    }
    std::vector<WifiNetwork> networks = currentNetworks();
    if (networks == networks_) {
        return;
    }
    log::debug("Network list changed, size: {}", networks.size());
    published_.publish(networks);
    networks_ = std::move(networks);
}

Evidence NetworkList::sightingOf(const std::string& ssid) const {
    Evidence sighting;
    for (const Communicator::BssProperties& bss : bssList_) {
        if (bss.ssid == ssid) {
            sighting.signal = sighting.seen ? std::max(sighting.signal, bss.signal) : bss.signal;
            sighting.seen = true;
            sighting.demands = anyOf(sighting.demands, bss.demands);
        }
    }
    return sighting;
}

NetworkAccessBySsid NetworkList::currentAccess() const {
    NetworkAccessBySsid all;
    for (const Communicator::BssProperties& bss : bssList_) {
        if (bss.ssid.empty()) {
            continue;
        }
        const auto [entry, isNew] = all.try_emplace(bss.ssid);
        NetworkAccess& access = entry->second;
        access.demands = isNew ? bss.demands : anyOf(access.demands, bss.demands);
        access.mode = isNew ? bss.securityMode : access.mode;
    }
    for (auto& [ssid, access] : all) {
        access.mode = modeToJoin(access.mode, access.demands, hashToElement_);
    }
    return all;
}

std::vector<WifiNetwork> NetworkList::currentNetworks() const {
    std::map<std::string, WifiNetwork> bySsid;
    for (const Communicator::BssProperties& bss : bssList_) {
        if (bss.ssid.empty()) {
            continue;
        }
        const auto [entry, isNew] = bySsid.try_emplace(bss.ssid);
        WifiNetwork& network = entry->second;
        if (isNew) {
            network = {bss.ssid, bss.signal, bss.securityMode, configuredSsids_.contains(bss.ssid)};
        } else {
            network.signal = std::max(network.signal, bss.signal);
        }
    }
    if (ssidInUse_) {
        bySsid.erase(*ssidInUse_);
    }
    std::vector<WifiNetwork> networks;
    networks.reserve(bySsid.size());
    for (auto& entry : bySsid) {
        networks.push_back(std::move(entry.second));
    }
    std::sort(networks.begin(), networks.end(),
              [](const WifiNetwork& a, const WifiNetwork& b) { return a.signal > b.signal; });
    return networks;
}

}  // namespace kaz::wifi
