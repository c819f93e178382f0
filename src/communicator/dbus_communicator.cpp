#include "communicator/dbus_communicator.h"

#include "base/log.h"
#include "communicator/bus_names.h"

#include <utility>

namespace kaz::wifi {

std::unique_ptr<Communicator> createCommunicator() {
    return std::make_unique<DbusCommunicator>();
}

DbusCommunicator::DbusCommunicator(std::chrono::milliseconds callLimit)
    : unit_(bus_,
            [this](const std::string& activeState) { connectOrDisconnectFromSupplicantSync(activeState); }),
      onlineState_(bus_, [this](bool online) { networkdOnlineHandler(online); }),
      bus_(callLimit) {
    bus_.onConnectionChanged([this](bool connected) { onConnectionChanged(connected); });
    // Before the start, so that we also notice a daemon that joins the bus right after a call to it failed.
    bus_.onOwnerChanged(bus::systemd::service, [this](bool owned) { unit_.onOwnerChangedSync(owned); });
    bus_.onOwnerChanged(bus::supplicant::service,
                        [this](bool owned) { onSupplicantOwnerChangedSync(owned); });
    bus_.onOwnerChanged(bus::networkd::service,
                        [this](bool owned) { onlineState_.onOwnerChangedSync(owned); });
    bus_.pushTask([this] {
        followInterfaces();
        unit_.connectSync();
    });
}

void DbusCommunicator::startEventLoop() {
    bus_.start();
}

void DbusCommunicator::stopEventLoop() {
    bus_.stop();
}

bool DbusCommunicator::isSupplicantOn() {
    return supplicant_.attached();
}

bool DbusCommunicator::supplicantSurvived() {
    return lostWithBus_;
}

bool DbusCommunicator::isSupplicantSilent() {
    return supplicant_.isSilent();
}

// No request calls both daemons, except one that systemd has accepted.
FailureReason DbusCommunicator::lastFailure() {
    const FailureReason supplicants = supplicant_.lastFailure();
    return supplicants == FailureReason::none ? unit_.lastFailure() : supplicants;
}

void DbusCommunicator::forgetFailures() {
    supplicant_.forgetFailures();
    unit_.forgetFailures();
}

StackTrouble DbusCommunicator::stackTrouble() {
    if (supplicant_.hasInterface()) {
        return {};
    }
    if (!bus_.isConnected()) {
        return {StackTrouble::Place::bus, FailureReason::noBus};
    }
    if (unit_.unreadBecause() != FailureReason::none) {
        return {StackTrouble::Place::systemd, unit_.unreadBecause()};
    }
    return supplicant_.trouble();
}

void DbusCommunicator::pushTaskAsync_(std::function<void()> task) {
    bus_.pushTask(std::move(task));
}

void DbusCommunicator::configureTimerSync(bool enable, std::chrono::milliseconds interval) {
    bus_.configureTimer(enable, interval);
}

void DbusCommunicator::setTimerCompletedTask(std::function<void()> task) {
    bus_.setTimerTask(std::move(task));
}

void DbusCommunicator::setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) {
    bus_.setIdleTask(std::move(task));
}

bool DbusCommunicator::saveNetworkConfigurationSync() {
    return networks_.saveSync();
}

bool DbusCommunicator::startStopSupplicantSync(bool start) {
    return unit_.startStopSync(start);
}

bool DbusCommunicator::scanSync() {
    return radio_.scanSync();
}

std::unique_ptr<Communicator::ConfiguredNetwork> DbusCommunicator::addNetworkSync(
    const ConnectionSettings& settings, const Certificates& certificates) {
    return networks_.addSync(settings, certificates);
}

bool DbusCommunicator::reconnectSync() {
    return radio_.reconnectSync();
}

bool DbusCommunicator::disconnectSync() {
    return radio_.disconnectSync();
}

std::optional<int> DbusCommunicator::signalPollSync() {
    return radio_.signalPollSync();
}

std::optional<int> DbusCommunicator::polledRate() {
    return radio_.polledRate();
}

std::set<std::string> DbusCommunicator::eapMethodsSync() {
    return radio_.eapMethodsSync();
}

std::vector<std::unique_ptr<Communicator::ConfiguredNetwork>>
DbusCommunicator::getAllConfiguredNetworksSync() {
    return networks_.listSync();
}

void DbusCommunicator::refreshBssListSync() {
    signals_.readBssListSync();
}

void DbusCommunicator::refreshSync() {
    if (supplicant_.mayUse("read the state", log::Level::debug)) {
        signals_.readSync();
    }
}

void DbusCommunicator::connectOrDisconnectFromSupplicantSync(const std::string& activeState) {
    const bool running = activeState == "active" || activeState == "reloading";
    const bool ended = activeState == "failed" || activeState == "inactive";
    // Empty when systemd did not answer.
    if (!activeState.empty()) {
        unitRuns_ = running;
    }
    if (running && !supplicant_.attached()) {
        attachSync();
    } else if (ended || (gone_ && !unitRuns_)) {
        detachFromEnded();
    }
}

// systemd may start another supplicant without ever reporting the end of the former one.
void DbusCommunicator::onSupplicantOwnerChangedSync(bool owned) {
    gone_ = !owned;
    if (!owned) {
        lostWithBus_ = false;  // this time the supplicant itself has gone
        // While the unit runs, systemd has not noticed the end yet, but will report it.
        if (!unitRuns_) {
            detachFromEnded();
        }
    } else if (!supplicant_.isFromPresentOwner()) {
        if (!lostWithBus_) {
            supplicant_.forget();
        }
        if (supplicant_.attached()) {
            attachAgainSync();
        }
    }
}

// A supplicant makes and removes interfaces at the request of its clients, and some start without any.
void DbusCommunicator::followInterfaces() {
    supplicant_.onAdded([this](const dbus::OPath& interface, const std::string& name) {
        onInterfaceAddedSync(interface, name);
    });
    supplicant_.onRemoved([this](const dbus::OPath& interface) { onInterfaceRemovedSync(interface); });
}

void DbusCommunicator::onInterfaceAddedSync(const dbus::OPath& interface, const std::string& name) {
    const bool inUse = supplicant_.hasInterface() && interface.str() == supplicant_.path().str();
    if (!supplicant_.hasInterface() || (supplicant_.isNamed(name) && !inUse)) {
        attachAgainSync(interface);
    } else {
        supplicant_.noteAdded(interface);
    }
}

void DbusCommunicator::onInterfaceRemovedSync(const dbus::OPath& interface) {
    if (supplicant_.hasInterface() && interface.str() == supplicant_.path().str()) {
        detach();
        // A supplicant that is being stopped removes its interface, too.
        if (unitRuns_) {
            unit_.reportStateSync();
        }
    }
}

void DbusCommunicator::attachSync(const dbus::OPath& preferred) {
    if (!supplicant_.attachSync(lostWithBus_, preferred)) {
        return;
    }
    signals_.subscribe();
    signals_.readSync();
    onlineState_.subscribeSync();
    signals_.subscribeToNetworks();
    wifiServiceStatusChangeHandler();
    lostWithBus_ = false;
    logAttachment();
}

// To another interface, or to another supplicant.
void DbusCommunicator::attachAgainSync(const dbus::OPath& preferred) {
    if (supplicant_.hasInterface()) {
        detach();
    } else if (supplicant_.attached()) {
        supplicant_.detach();
    }
    if (unitRuns_) {
        attachSync(preferred);
    }
}

void DbusCommunicator::detachFromEnded() {
    lostWithBus_ = false;
    if (supplicant_.attached()) {
        detach();
    }
    supplicant_.forget();
}

void DbusCommunicator::detach() {
    supplicant_.detach();
    onlineState_.detach();
    wifiServiceStatusChangeHandler();
    bus_.dropTemporarySubscriptions();
    logAttachment();
}

void DbusCommunicator::onConnectionChanged(bool connected) {
    gone_ = false;
    if (connected) {
        unit_.connectSync();
    } else if (supplicant_.attached()) {
        lostWithBus_ = true;
        detach();
    }
}

void DbusCommunicator::logAttachment() const {
    log::debug("wpa_supplicant is {}", supplicant_.attached() ? "running" : "stopped");
}

}  // namespace kaz::wifi
