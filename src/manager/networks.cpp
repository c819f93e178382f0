// Scanning and the published list of networks in range.
#include "diagnostics/log.h"
#include "manager/manager_impl.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kaz::wifi {

void ManagerImpl::scan() {
    communicator_->pushTaskAsync_([this] { communicator_->scanSync(); });
}

void ManagerImpl::signalScanningDone(bool success) {
    log::debug("Scan done, status: {}", success);
}

std::vector<WifiNetwork> ManagerImpl::networks() {
    const std::lock_guard lock(mutex_);
    return networks_;
}

void ManagerImpl::onNetworksListChanged(std::function<void()> callback) {
    replaceCallback(networksListChangedCallback_, std::move(callback));
}

void ManagerImpl::onScanningChanged(std::function<void()> callback) {
    replaceCallback(scanningChangedCallback_, std::move(callback));
}

void ManagerImpl::taskUpdateNetworks() {
    if (!networksDirty_) {
        return;
    }
    networksDirty_ = false;
    std::vector<WifiNetwork> list = currentNetworkList();
    if (list == networks_) {
        return;
    }
    log::debug("Network list changed, size: {}", list.size());
    std::unique_lock lock(mutex_);
    networks_.swap(list);
    lock.unlock();
    list = {};
    notify(networksListChangedCallback_);
}

std::vector<WifiNetwork> ManagerImpl::currentNetworkList() const {
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
    // The network in use is shown elsewhere.
    if (connectionInfo_.status != ConnectionInfo::Status::disconnected) {
        bySsid.erase(connectionInfo_.ssid);
    }
    std::vector<WifiNetwork> list;
    list.reserve(bySsid.size());
    for (auto& entry : bySsid) {
        list.push_back(std::move(entry.second));
    }
    std::sort(list.begin(), list.end(),
              [](const WifiNetwork& a, const WifiNetwork& b) { return a.signal > b.signal; });
    return list;
}

}  // namespace kaz::wifi
