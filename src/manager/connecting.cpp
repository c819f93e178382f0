// Connecting, disconnecting and forgetting. Each task tells the tracker and publishes before it touches the
// supplicant; what follows from the supplicant's answer is in refresh.cpp.
#include "diagnostics/log.h"
#include "manager/connect_validation.h"
#include "manager/manager_impl.h"
#include "secrets/wipe.h"

#include <memory>
#include <utility>

namespace kaz::wifi {
namespace {

// Settings that leave no secret behind in memory, whether their task ran or was dropped.
class WipedSettings {
  public:
    // NOLINTNEXTLINE(modernize-pass-by-value): an argument by value would be one more copy to wipe
    explicit WipedSettings(const ConnectionSettings& settings) : settings_(settings) {}
    ~WipedSettings() {
        wipe(settings_.password);
        wipe(settings_.identity);
        wipe(settings_.anonymousIdentity);
    }
    WipedSettings(const WipedSettings&) = delete;
    WipedSettings& operator=(const WipedSettings&) = delete;
    WipedSettings(WipedSettings&&) = delete;
    WipedSettings& operator=(WipedSettings&&) = delete;

    const ConnectionSettings& get() const { return settings_; }

  private:
    ConnectionSettings settings_;
};

bool hasSsid(Communicator::ConfiguredNetwork& network, const std::string& ssid) {
    const std::optional<std::string>& own = network.getSsid();
    return own && *own == ssid;
}

}  // namespace

ConnectResult ManagerImpl::connect(const ConnectionSettings& settings) {
    const ConnectResult verdict = validateConnectionSettings(settings, eapMethods(), phase2Methods());
    if (verdict == ConnectResult::ok) {
        communicator_->pushTaskAsync_(
            [this, copy = std::make_shared<const WipedSettings>(settings)] { taskConnect(copy->get()); });
    }
    return verdict;
}

void ManagerImpl::connectConfigured(const std::string& ssid) {
    communicator_->pushTaskAsync_([this, ssid] { taskConnectConfigured(ssid); });
}

void ManagerImpl::disconnect() {
    communicator_->pushTaskAsync_([this] { taskDisconnect(); });
}

void ManagerImpl::forgetNetwork(const std::string& ssid) {
    if (!ssid.empty()) {
        communicator_->pushTaskAsync_([this, ssid] { taskForgetNetwork(ssid); });
    }
}

void ManagerImpl::taskConnect(const ConnectionSettings& settings) {
    log::debug("Connecting to {}", Communicator::makeSsidRedactable(settings.ssid));
    connectionInfoHelper_.notifyAboutConnectionAttempt(settings.ssid);
    taskUpdateConnectionInfo();
    if (settings.hidden) {
        log::debug("Assuming that network might be hidden. {}",
                   Communicator::makeSsidRedactable(settings.ssid));
    }
    const auto network = communicator_->addNetworkSync(settings);
    if (!network) {
        return;  // the tracker gives the attempt up when its time is over
    }
    taskConnectCommon(*network);
    taskUpdateConfiguredNetworks();
}

void ManagerImpl::taskConnectConfigured(const std::string& ssid) {
    log::debug("Connecting to configured network {}", Communicator::makeSsidRedactable(ssid));
    connectionInfoHelper_.notifyAboutConnectionAttempt(ssid);
    taskUpdateConnectionInfo();
    for (const auto& network : communicator_->getAllConfiguredNetworksSync()) {
        if (hasSsid(*network, ssid)) {
            taskConnectCommon(*network);
            return;
        }
    }
    log::warn("Tried connecting to configured network, but it isn't known to us. {}",
              Communicator::makeSsidRedactable(ssid));
}

void ManagerImpl::taskConnectCommon(Communicator::ConfiguredNetwork& network) {
    const std::string ssid = network.getSsid().value();
    log::info("Connecting to {}", Communicator::makeSsidRedactable(ssid));
    if (!configuration_.select(network)) {
        return;
    }
    // One configuration an SSID: the one just selected replaces all older ones.
    for (const auto& other : communicator_->getAllConfiguredNetworksSync()) {
        if (other->id() != network.id() && hasSsid(*other, ssid)) {
            other->removeSync();
        }
    }
}

void ManagerImpl::taskDisconnect() {
    log::info("Disconnecting");
    connectionInfoHelper_.notifyAboutDisconnect();
    taskUpdateConnectionInfo();
    communicator_->disconnectSync();
}

void ManagerImpl::taskForgetNetwork(const std::string& ssid) {
    log::info("Forgetting {}", Communicator::makeSsidRedactable(ssid));
    connectionInfoHelper_.notifyAboutForget(ssid);
    taskUpdateConnectionInfo();
    bool found = false;
    for (const auto& network : communicator_->getAllConfiguredNetworksSync()) {
        if (hasSsid(*network, ssid)) {
            found = true;
            network->removeSync();
        }
    }
    if (found) {
        taskUpdateConfiguredNetworks();
    } else {
        log::error("Unable to remove network, configuration not found. {}",
                   Communicator::makeSsidRedactable(ssid));
    }
    configuration_.requestSave();
}

void ManagerImpl::signalNetworkSelected(const std::optional<std::string>& ssid) {
    if (!ssid) {
        return;
    }
    log::debug("NetworkSelected is {}", Communicator::makeSsidRedactable(*ssid));
    connectionInfoHelper_.setCurrentNetworkSsid(ssid);
}

}  // namespace kaz::wifi
