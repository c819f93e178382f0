#include "manager/connecting.h"

#include "base/log.h"

namespace kaz::wifi {
namespace {

bool hasSsid(Communicator::ConfiguredNetwork& network, const std::string& ssid) {
    return network.getSsid() == ssid;
}

}  // namespace

Connecting::Connecting(Communicator& communicator, ConnectionInfoHelper& tracker, ConnectionRefresh& refresh,
                       SupplicantConfiguration& configuration, NetworkList& list, Judge& judge)
    : communicator_(communicator),
      tracker_(tracker),
      refresh_(refresh),
      configuration_(configuration),
      list_(list),
      judge_(judge) {}

std::optional<RequestFailure> Connecting::taskConnect(const ConnectionSettings& settings,
                                                      const Certificates& certificates) {
    refusal_ = Refusal::none;
    log::debug("Connecting to {}", Communicator::makeSsidRedactable(settings.ssid));
    tracker_.notifyAboutConnectionAttempt(settings.ssid);
    refresh_.taskUpdateConnectionInfo();
    judge_.attemptBegan(settings.ssid, settings.securityMode, settings.hidden);
    if (settings.hidden) {
        log::debug("Assuming that network might be hidden. {}",
                   Communicator::makeSsidRedactable(settings.ssid));
    }
    const auto network = communicator_.addNetworkSync(settings, certificates);
    if (!network) {
        noteFailedRequest();
        return RequestFailure::refused;
    }
    const auto failure = taskConnectCommon(*network);
    list_.taskUpdateConfiguredNetworks();
    return failure;
}

std::optional<RequestFailure> Connecting::taskConnectConfigured(const std::string& ssid) {
    refusal_ = Refusal::none;
    log::debug("Connecting to configured network {}", Communicator::makeSsidRedactable(ssid));
    tracker_.notifyAboutConnectionAttempt(ssid);
    refresh_.taskUpdateConnectionInfo();
    judge_.attemptBegan(ssid, std::nullopt, false);
    for (const auto& network : communicator_.getAllConfiguredNetworksSync()) {
        if (hasSsid(*network, ssid)) {
            return taskConnectCommon(*network);
        }
    }
    noteFailedRequest();
    log::warn("Tried connecting to configured network, but it isn't known to us. {}",
              Communicator::makeSsidRedactable(ssid));
    return RequestFailure::unknownNetwork;
}

void Connecting::noteFailedRequest() {
    if (communicator_.isSupplicantSilent()) {
        judge_.requestFailed(Facts::Request::unanswered);
    } else {
        const bool untold = communicator_.lastFailure() == FailureReason::unknown;
        judge_.requestFailed(untold ? Facts::Request::failed : Facts::Request::refused);
    }
}

std::optional<RequestFailure> Connecting::taskConnectCommon(Communicator::ConfiguredNetwork& network) {
    const std::string ssid = network.getSsid().value();
    log::info("Connecting to {}", Communicator::makeSsidRedactable(ssid));
    if (!configuration_.select(network)) {
        noteFailedRequest();
        return RequestFailure::refused;
    }
    ++unreportedSelections_;
    // One configuration per SSID: the selected one replaces all older ones.
    for (const auto& other : communicator_.getAllConfiguredNetworksSync()) {
        if (other->id() != network.id() && hasSsid(*other, ssid)) {
            other->removeSync();
        }
    }
    return std::nullopt;
}

std::optional<RequestFailure> Connecting::taskDisconnect() {
    log::info("Disconnecting");
    // The supplicant does not signal the selection of the network in use.
    if (!tracker_.attemptPending()) {
        unreportedSelections_ = 0;
    }
    tracker_.notifyAboutDisconnect();
    refresh_.taskUpdateConnectionInfo();
    return disconnectSync() ? std::nullopt : std::optional(RequestFailure::refused);
}

// While the supplicant searches it refuses to disconnect, goes on searching, and connects by itself. Then we ask again.
// If it refuses although we know of a link, it may have lost that link, or the call has failed: its state tells.
bool Connecting::disconnectSync() {
    refusal_ = Refusal::none;
    if (communicator_.disconnectSync()) {
        return true;
    }
    if (!tracker_.linkUpOrComing()) {
        refusal_ = Refusal::searching;
        return false;
    }
    refusal_ = Refusal::unclear;
    communicator_.refreshSync();
    return false;
}

void Connecting::signalSupplicantStatus(std::optional<Communicator::SupplicantConnectionStatus> status) {
    if (!status || refusal_ == Refusal::none) {
        return;
    }
    // The supplicant may report several steps at once, so "Connecting" may be left out.
    const bool linkUpOrComing = *status >= Communicator::SupplicantConnectionStatus::Connecting;
    if (refusal_ == Refusal::unclear) {
        refusal_ = linkUpOrComing ? Refusal::none : Refusal::searching;
    } else if (linkUpOrComing) {
        stayDisconnected_.post([this] { taskStayDisconnected(); });
    }
}

void Connecting::taskStayDisconnected() {
    if (refusal_ == Refusal::searching) {
        log::info("Disconnecting again, the supplicant has found a network");
        tracker_.notifyAboutDisconnect();
        refresh_.taskUpdateConnectionInfo();
        disconnectSync();
    }
}

// When another client wants a network, an earlier request to disconnect counts no more.
void Connecting::signalNetworkSelected() {
    if (unreportedSelections_ > 0) {
        --unreportedSelections_;
    } else {
        refusal_ = Refusal::none;
    }
}

void Connecting::supplicantChanged() {
    refusal_ = Refusal::none;
    unreportedSelections_ = 0;
}

std::optional<RequestFailure> Connecting::taskForgetNetwork(const std::string& ssid) {
    log::info("Forgetting {}", Communicator::makeSsidRedactable(ssid));
    tracker_.notifyAboutForget(ssid);
    refresh_.taskUpdateConnectionInfo();
    bool found = false;
    bool allRemoved = true;
    for (const auto& network : communicator_.getAllConfiguredNetworksSync()) {
        if (hasSsid(*network, ssid)) {
            found = true;
            allRemoved = network->removeSync() && allRemoved;
        }
    }
    if (found) {
        list_.taskUpdateConfiguredNetworks();
    } else {
        log::error("Unable to remove network, configuration not found. {}",
                   Communicator::makeSsidRedactable(ssid));
    }
    configuration_.requestSave();
    // The link that was published as ended may be up for good. The supplicant has nothing to report then.
    if (!(found && allRemoved) && tracker_.linkUpOrComing() &&
        tracker_.getConnectionInfo().status == ConnectionInfo::Status::disconnected) {
        communicator_.refreshSync();
    }
    if (!found) {
        return RequestFailure::unknownNetwork;
    }
    return allRemoved ? std::nullopt : std::optional(RequestFailure::refused);
}

}  // namespace kaz::wifi
