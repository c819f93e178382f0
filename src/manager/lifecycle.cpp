// Start and end, the idle pass, the on/off switch, the supplicant coming and going.
#include "diagnostics/log.h"
#include "manager/manager_impl.h"

#include <exception>
#include <utility>

namespace kaz::wifi {

ManagerImpl::ManagerImpl() : ManagerImpl(createCommunicator(), std::make_shared<TimeProviderWallClock>()) {}

ManagerImpl::ManagerImpl(std::unique_ptr<Communicator> communicator,
                         std::shared_ptr<TimeProvider> timeProvider)
    : communicator_(std::move(communicator)),
      connectionInfoHelper_(std::move(timeProvider)),
      configuration_(*communicator_),
      enabled_(communicator_->readEnabledConfiguration()) {
    wireCommunicator();
    communicator_->pushTaskAsync_([this] { signalEventLoopIdle(); });
    communicator_->startEventLoop();
}

void ManagerImpl::wireCommunicator() {
    communicator_->wifiServiceStatusChangeHandler = [this] { signalWifiServiceStatusChange(); };
    communicator_->scanningDoneHandler = [this](bool success) { signalScanningDone(success); };
    communicator_->networkSelectedHandler = [this](const std::optional<std::string>& ssid) {
        signalNetworkSelected(ssid);
    };
    communicator_->supplicantPropertiesHandler =
        [this](Communicator::SupplicantInterfaceProperties properties) {
            signalSupplicantPropertiesChanged(std::move(properties));
        };
    communicator_->setIdleTask([this] { return signalEventLoopIdle(); });
    communicator_->setTimerCompletedTask([this] { signalTimerCompleted(); });
    communicator_->networkdOnlineHandler = [this](bool online) {
        connectionInfoHelper_.setNetworkdIsOnline(online);
    };
}

ManagerImpl::~ManagerImpl() {
    stopping_ = true;
    communicator_->stopEventLoop();
    // The loop runs one last idle pass, through communicator_. Its destructor waits for that, so the pointer
    // has to stay in place until it returns: reset() would clear it first.
    std::default_delete<Communicator>()(communicator_.get());
    static_cast<void>(communicator_.release());
}

void ManagerImpl::setEnabled(bool on) {
    log::info("Turning wifi {}", on ? "on" : "off");
    const std::lock_guard oneAtATime(switchMutex_);
    const Choice choice(*this);
    if (enabled_.exchange(on) != on) {
        communicator_->pushTaskAsync_([this] { taskCallEnabledChangedCallback(); });
    }
    communicator_->writeEnabledConfiguration(on);
    // Also when nothing changed: asking again is how a user retries.
    communicator_->pushTaskAsync_([this, on] { communicator_->startStopSupplicantSync(on); });
}

void ManagerImpl::onEnabledChanged(std::function<void()> callback) {
    replaceCallback(enabledChangedCallback_, std::move(callback));
}

std::optional<std::chrono::milliseconds> ManagerImpl::signalEventLoopIdle() {
    taskUpdateConnectionInfo();
    taskUpdateNetworks();
    if (stopping_) {
        // Nobody will follow the attempt to its end.
        configuration_.enableOthersAgain();
    }
    configuration_.taskSaveConfiguration();
    return connectionInfoHelper_.getActiveTimeout();
}

void ManagerImpl::signalTimerCompleted() {
    if (const auto signal = communicator_->signalPollSync()) {
        connectionInfoHelper_.setSignalStrength(*signal);
    }
}

void ManagerImpl::signalWifiServiceStatusChange() {
    const bool up = communicator_->isSupplicantOn();
    if (up) {
        configuration_.supplicantCame();
        taskUpdateEapMethods();
        taskUpdateConfiguredNetworks();
    } else {
        scanning_ = false;
        bssList_.clear();
        configuredSsids_.clear();
        networksDirty_ = true;
        configuration_.supplicantWent();
    }
    connectionInfoHelper_.setSupplicantState(up);
    const bool enabledChanged = adoptStoredChoice();
    const bool initializedChanged = wifiStackInitialized_.exchange(up) != up;
    if (enabledChanged || initializedChanged) {
        taskCallEnabledChangedCallback();
    }
}

bool ManagerImpl::adoptStoredChoice() {
    std::unique_lock lock(mutex_);
    const unsigned made = choicesMade_;
    const bool written = made == choicesWritten_;
    lock.unlock();
    const bool stored = communicator_->readEnabledConfiguration();
    lock.lock();
    // What was read is older than a choice that somebody makes meanwhile.
    return written && made == choicesMade_ && enabled_.exchange(stored) != stored;
}

ManagerImpl::Choice::Choice(ManagerImpl& manager) : manager_(manager) {
    const std::lock_guard lock(manager_.mutex_);
    ++manager_.choicesMade_;
}

ManagerImpl::Choice::~Choice() {
    const std::lock_guard lock(manager_.mutex_);
    ++manager_.choicesWritten_;
}

void ManagerImpl::taskCallEnabledChangedCallback() {
    notify(enabledChangedCallback_);
}

void ManagerImpl::replaceCallback(Callback& target, Callback callback) {
    const std::lock_guard lock(mutex_);
    target = std::move(callback);
}

// A callback is foreign code: what it throws, when it is copied too, must not keep our own work from being finished.
void ManagerImpl::notify(const Callback& callback) {
    try {
        std::unique_lock lock(mutex_);
        const Callback copy = callback;
        lock.unlock();
        if (copy) {
            copy();
        }
    } catch (const std::exception& error) {
        log::error("A callback threw an exception: {}", error.what());
    } catch (...) {
        log::error("A callback threw an exception of unknown type");
    }
}

}  // namespace kaz::wifi
