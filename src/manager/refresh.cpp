// Following the supplicant: its reports, its configured networks and EAP methods, and the publication of the
// connection info with what has to happen when a connection succeeded or failed.
#include "diagnostics/connection_info_text.h"
#include "diagnostics/log.h"
#include "manager/manager_impl.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace kaz::wifi {
namespace {

using PropertyChange = Communicator::PropertyChange;
using Status = ConnectionInfo::Status;

constexpr std::array candidateEapMethods{"PEAP", "TTLS", "MSCHAPV2", "PWD"};
constexpr std::chrono::milliseconds signalPollPeriod{60000};

}  // namespace

std::set<std::string> ManagerImpl::eapMethods() const {
    const std::lock_guard lock(mutex_);
    return eapMethods_;
}

std::set<std::string> ManagerImpl::phase2Methods() const {
    static const std::set<std::string> methods{"MSCHAPV2", "GTC", "MSCHAP", "PAP"};
    return methods;
}

ConnectionInfo ManagerImpl::connectionInfo() const {
    const std::lock_guard lock(mutex_);
    return connectionInfo_;
}

void ManagerImpl::onConnectionInfoChanged(std::function<void()> callback) {
    replaceCallback(connectionInfoChangedCallback_, std::move(callback));
}

void ManagerImpl::taskUpdateConfiguredNetworks() {
    std::set<std::string> ssids;
    for (const auto& network : communicator_->getAllConfiguredNetworksSync()) {
        if (const auto& ssid = network->getSsid()) {
            ssids.insert(*ssid);
        }
    }
    configuredSsids_ = std::move(ssids);
    networksDirty_ = true;
}

void ManagerImpl::taskUpdateEapMethods() {
    const std::set<std::string> offered = communicator_->eapMethodsSync();
    std::set<std::string> usable;
    std::copy_if(candidateEapMethods.begin(), candidateEapMethods.end(), std::inserter(usable, usable.end()),
                 [&](const char* method) { return offered.contains(method); });
    const std::lock_guard lock(mutex_);
    eapMethods_ = std::move(usable);
}

void ManagerImpl::signalSupplicantPropertiesChanged(Communicator::SupplicantInterfaceProperties properties) {
    if (properties.bssListChange != PropertyChange::Unchanged) {
        bssList_ = std::move(properties.bssList);
        networksDirty_ = true;
    }
    if (properties.scanning) {
        connectionInfoHelper_.setScanning(*properties.scanning);
        if (scanning_.exchange(*properties.scanning) != *properties.scanning) {
            notify(scanningChangedCallback_);
        }
    }
    if (properties.currentNetworkChange == PropertyChange::Set) {
        connectionInfoHelper_.setCurrentNetworkSsid(std::move(properties.currentNetworkSsid));
    }
    switch (properties.currentBssChange) {
        case PropertyChange::Unchanged:
            break;
        case PropertyChange::Set:
            connectionInfoHelper_.setCurrentBss(std::move(properties.currentBss));
            break;
        case PropertyChange::Cleared:
            connectionInfoHelper_.setCurrentBss(std::nullopt);
            break;
    }
    if (properties.status) {
        connectionInfoHelper_.setSupplicantStatus(*properties.status);
    }
}

void ManagerImpl::taskUpdateConnectionInfo() {
    ConnectionInfo info = connectionInfoHelper_.getConnectionInfo();
    if (info == connectionInfo_) {
        return;
    }
    log::debug("connectionInfo changed: {}", info);
    metrics_.reportChange(connectionInfo_, info);
    updateSignalPollTimer(info);
    // The first change after the start tells what was so before, not what an attempt came to.
    if (connectionInfoStored_) {
        reactToSuccess(info);
        if (info.status != Status::connectingWifi) {
            configuration_.enableOthersAgain();
        }
    }
    std::unique_lock lock(mutex_);
    connectionInfo_ = std::move(info);
    lock.unlock();
    connectionInfoStored_ = true;
    notify(connectionInfoChangedCallback_);
    networksDirty_ = true;
}

void ManagerImpl::updateSignalPollTimer(const ConnectionInfo& next) {
    const bool wasLive = connectionInfo_.status != Status::disconnected;
    const bool isLive = next.status != Status::disconnected;
    if (wasLive != isLive) {
        communicator_->configureTimerSync(isLive, signalPollPeriod);
    }
}

void ManagerImpl::reactToSuccess(const ConnectionInfo& next) {
    const bool reached = next.status >= Status::connectingIP;
    const bool before = connectionInfo_.status >= Status::connectingIP && connectionInfo_.ssid == next.ssid;
    if (!reached || before) {
        return;
    }
    metrics_.reportSuccess();
    configuration_.prefer(next.ssid);
}

}  // namespace kaz::wifi
