#include "manager/manager_impl.h"

#include "manager/certificate_rules.h"
#include "manager/connect_validation.h"
#include "manager/wiped_settings.h"

#include <algorithm>
#include <utility>

namespace kaz::wifi {
namespace {

using Change = Published::Change;
using Delay = std::optional<std::chrono::milliseconds>;

Delay earlier(Delay a, Delay b) {
    return a && b ? std::min(*a, *b) : (a ? a : b);
}

}  // namespace

ManagerImpl::ManagerImpl() : ManagerImpl(createCommunicator(), std::make_shared<TimeProviderWallClock>()) {}

ManagerImpl::ManagerImpl(std::unique_ptr<Communicator> communicator,
                         std::shared_ptr<TimeProvider> timeProvider)
    : communicator_(std::move(communicator)),
      requests_(*communicator_),
      tracker_(timeProvider),
      configuration_(*communicator_),
      list_(*communicator_, published_),
      judge_(timeProvider, [this](const std::string& ssid) { return list_.sightingOf(ssid); }),
      presentation_(std::move(timeProvider)),
      refresh_(*communicator_, tracker_, configuration_, list_, judge_, inUse_, presentation_, published_),
      connecting_(*communicator_, tracker_, refresh_, configuration_, list_, judge_),
      reports_(tracker_, list_, published_),
      stateRefresh_(*communicator_, tracker_, list_),
      choice_(*communicator_, published_, requests_) {
    wireCommunicator();
    communicator_->pushTaskAsync_([this] { signalEventLoopIdle(); });
    communicator_->startEventLoop();
}

void ManagerImpl::wireCommunicator() {
    communicator_->wifiServiceStatusChangeHandler = [this] { signalWifiServiceStatusChange(); };
    communicator_->scanningDoneHandler = [this](bool success) {
        reports_.signalScanningDone(success);
        judge_.scanEnded(success);
        stateRefresh_.scanEnded();
    };
    communicator_->networkSelectedHandler = [this](const std::optional<std::string>& ssid) {
        connecting_.signalNetworkSelected();
        reports_.signalNetworkSelected(ssid);
        if (ssid) {
            judge_.networkSelected(*ssid);
        }
    };
    communicator_->supplicantPropertiesHandler =
        [this](Communicator::SupplicantInterfaceProperties properties) {
            const auto status = properties.status;
            const bool listRead = properties.bssListChange != Communicator::PropertyChange::Unchanged;
            if (listRead) {
                stateRefresh_.bssListReported();
            }
            if (properties.currentNetworkChange == Communicator::PropertyChange::Set) {
                judge_.networkSelected(properties.currentNetworkSsid);
            }
            if (status) {
                judge_.noteStatus(*status);
            }
            if (properties.hashToElement) {
                judge_.noteHashToElement(*properties.hashToElement);
                list_.setHashToElement(*properties.hashToElement);
            }
            inUse_.note(properties);
            reports_.signalSupplicantPropertiesChanged(std::move(properties));
            if (listRead) {
                judge_.listRead();
            }
            stateRefresh_.reported();
            connecting_.signalSupplicantStatus(status);
        };
    communicator_->linkEvidenceHandler = [this](const Communicator::LinkEvidence& evidence) {
        judge_.note(evidence);
    };
    communicator_->configuredNetworksChangedHandler = [this] { stateRefresh_.networksChanged(); };
    communicator_->setIdleTask([this] { return signalEventLoopIdle(); });
    communicator_->setTimerCompletedTask([this] { signalTimerCompleted(); });
    communicator_->networkdOnlineHandler = [this](bool online) { tracker_.setNetworkdIsOnline(online); };
}

ManagerImpl::~ManagerImpl() {
    stopping_ = true;
    communicator_->stopEventLoop();
    // The communicator's destructor waits for the last idle pass, whose callbacks may still make requests. So the pointer
    // stays valid until the destructor has returned; reset() would clear it first.
    std::default_delete<Communicator>()(communicator_.get());
    static_cast<void>(communicator_.release());
}

// While detached, the communicator refuses what the supplicant was not asked.
void ManagerImpl::post(RequestLedger::Request request) {
    requests_.post([this, request = std::move(request)] {
        const auto failure = request();
        return failure && !wifiStackInitialized_ ? RequestFailure::notAttached : failure;
    });
}

void ManagerImpl::scan() {
    post(
        [this] { return communicator_->scanSync() ? std::nullopt : std::optional(RequestFailure::refused); });
}

ConnectResult ManagerImpl::connect(const ConnectionSettings& settings, const Certificates& certificates) {
    const AcceptedMethods available = published_.eapMethods();
    const ConnectResult verdict = validateWithCertificates(settings, certificates, available);
    if (verdict == ConnectResult::ok) {
        auto copy = std::make_shared<const WipedSettings>(
            settings, certificates, eapMethodsToAllow(settings, certificates, available));
        post([this, copy = std::move(copy)] {
            return connecting_.taskConnect(copy->settings(), copy->certificates());
        });
    }
    return verdict;
}

ConnectResult ManagerImpl::validate(const ConnectionSettings& settings,
                                    const Certificates& certificates) const {
    const ConnectResult verdict = validateWithCertificates(settings, certificates, published_.eapMethods());
    return verdict == ConnectResult::ok && !isSendable(settings, certificates) ? ConnectResult::notSendable
                                                                               : verdict;
}

void ManagerImpl::connectConfigured(const std::string& ssid) {
    post([this, ssid] { return connecting_.taskConnectConfigured(ssid); });
}

void ManagerImpl::disconnect() {
    post([this] { return connecting_.taskDisconnect(); });
}

void ManagerImpl::forgetNetwork(const std::string& ssid) {
    if (!ssid.empty()) {
        post([this, ssid] { return connecting_.taskForgetNetwork(ssid); });
    }
}

void ManagerImpl::setAddressTimeout(std::chrono::milliseconds timeout) {
    communicator_->pushTaskAsync_([this, timeout] { presentation_.setAddressTimeout(timeout); });
}

void ManagerImpl::whenCarriedOut(RequestLedger::Callback callback) {
    requests_.whenCarriedOut(std::move(callback));
}

void ManagerImpl::onEnabledChanged(std::function<void()> callback) {
    published_.onChange(Change::enabled, std::move(callback));
}

void ManagerImpl::onNetworksListChanged(std::function<void()> callback) {
    published_.onChange(Change::networks, std::move(callback));
}

void ManagerImpl::onScanningChanged(std::function<void()> callback) {
    published_.onChange(Change::scanning, std::move(callback));
}

void ManagerImpl::onConnectionInfoChanged(std::function<void()> callback) {
    published_.onChange(Change::connectionInfo, std::move(callback));
}

void ManagerImpl::onConnectionDetailsChanged(std::function<void()> callback) {
    published_.onChange(Change::connectionDetails, std::move(callback));
}

std::optional<std::chrono::milliseconds> ManagerImpl::signalEventLoopIdle() {
    refresh_.taskUpdateConnectionInfo();
    list_.taskUpdateNetworks();
    if (stopping_) {
        configuration_.abandonSelection();
    }
    const auto saved = configuration_.taskSaveConfiguration();
    stateRefresh_.idle();
    if (!stopping_) {
        requests_.idle(saved);
    }
    return earlier(tracker_.getActiveTimeout(), presentation_.remaining());
}

void ManagerImpl::signalTimerCompleted() {
    if (const auto signal = communicator_->signalPollSync()) {
        tracker_.setSignalStrength(*signal);
    }
    inUse_.setRate(communicator_->polledRate());
    stateRefresh_.timerCompleted();
}

void ManagerImpl::signalWifiServiceStatusChange() {
    const bool up = communicator_->isSupplicantOn();
    connecting_.supplicantChanged();
    if (up) {
        configuration_.supplicantAttached();
        published_.publish(usableEapMethods(communicator_->eapMethodsSync()));
        list_.taskUpdateConfiguredNetworks();
    } else {
        judge_.supplicantDetached(!choice_.isEnabled());
        inUse_ = {};
        reports_.supplicantDetached();
        stateRefresh_.supplicantDetached();
        list_.supplicantDetached();
        configuration_.supplicantDetached();
    }
    tracker_.setSupplicantState(up);
    const bool enabledChanged = choice_.adoptStoredChoice();
    const bool initializedChanged = wifiStackInitialized_.exchange(up) != up;
    if (enabledChanged || initializedChanged) {
        published_.notify(Change::enabled);
    }
}

}  // namespace kaz::wifi
