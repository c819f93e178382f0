#include "manager/network_list.h"

#include "base/log.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kaz::wifi {

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

void NetworkList::supplicantDetached() {
    bssList_.clear();
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
    std::vector<WifiNetwork> networks = currentNetworks();
    if (networks == networks_) {
        return;
    }
    log::debug("Network list changed, size: {}", networks.size());
    published_.publish(networks);
    networks_ = std::move(networks);
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
