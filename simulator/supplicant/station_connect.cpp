#include "simulator/supplicant/credentials.h"
#include "simulator/supplicant/station.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kaz::sim {
namespace {

constexpr int handshakeTimeoutReason = 15;  // IEEE 802.11: 4-way handshake timeout
constexpr int eapRefusedReason = 23;        // IEEE 802.11: IEEE 802.1X authentication failed

// IEEE 802.11 status codes.
constexpr int unspecifiedFailure = 1;
constexpr int challengeFailed = 15;
constexpr int tooManyStations = 17;

// Why the access point refuses to authenticate; empty if it accepts.
std::optional<int> refusalAtAuthentication(const NetworkConfig& network, const AccessPoint& accessPoint) {
    if (accessPoint.full) {
        return tooManyStations;
    }
    if (!suits(network, accessPoint)) {
        return challengeFailed;
    }
    if (admission(network, accessPoint) != Admission::refusedAtAuthentication) {
        return std::nullopt;
    }
    return accessPoint.security == Security::wep ? challengeFailed : unspecifiedFailure;
}

// The pause after this number of refusals in a row, as a multiple of the shortest pause.
int pauseFactor(unsigned failures) {
    constexpr std::array<std::pair<unsigned, int>, 6> steps = {
        {{50, 30}, {10, 12}, {5, 9}, {3, 6}, {2, 3}, {1, 2}}};
    const auto* const step =
        std::find_if(steps.begin(), steps.end(), [failures](const auto& s) { return failures > s.first; });
    return step == steps.end() ? 1 : step->second;
}

}  // namespace

void Station::connect(const Candidate& candidate) {
    searchTimer_.cancel();
    bss_ = candidate.bss;
    setState(State::authenticating);
    const bool ownChoice = current_ != candidate.network;
    setCurrentNetwork(candidate.network);
    if (ownChoice && neighbourhood_.announceOwnChoice) {
        events_.networkSelected(*currentNetwork());
    }
    stepAfter(neighbourhood_.times.authenticate, &Station::associate);
}

void Station::stepAfter(std::chrono::milliseconds delay, void (Station::*step)()) {
    step_ = scheduler_.after(delay, [this, step] { (this->*step)(); });
}

void Station::associate() {
    const AccessPoint* const accessPoint = reachedAccessPoint();
    const std::optional<int> refusal = accessPoint == nullptr
                                           ? challengeFailed
                                           : refusalAtAuthentication(currentNetwork()->config, *accessPoint);
    if (refusal) {
        if (*refusal == unspecifiedFailure) {
            // An SAE password is examined in the second step.
            authStatusCode_ = 0;
            events_.changed("AuthStatusCode");
        }
        refusedAtAuthentication(*refusal);
        return;
    }
    setState(State::associating);
    stepAfter(neighbourhood_.times.associate, &Station::associated);
}

void Station::associated() {
    failures_ = 0;
    setState(State::associated);
    events_.changed("CurrentBSS");
    const AccessPoint* const accessPoint = reachedAccessPoint();
    if (accessPoint == nullptr) {
        connectionLost();
        return;
    }
    switch (accessPoint->security) {
        case Security::open:
        case Security::wep:
            completed();
            return;
        case Security::eap:
            events_.eap("started", "");
            stepAfter(neighbourhood_.times.eap, &Station::authenticateByEap);
            return;
        case Security::wpa:
        case Security::wpa2:
        case Security::wpa2Wpa3:
        case Security::wpa3:
            stepAfter(neighbourhood_.times.handshake, &Station::handshake);
            return;
    }
}

void Station::authenticateByEap() {
    const AccessPoint* const accessPoint = reachedAccessPoint();
    const Network* const network = currentNetwork();
    if (accessPoint == nullptr) {
        connectionLost();
        return;
    }
    const std::string eap(network->config.text("eap"));
    events_.eap("accept proposed method", eap.empty() ? "PEAP" : eap.substr(0, eap.find(' ')));
    const Admission verdict = admission(network->config, *accessPoint);
    if (verdict == Admission::granted) {
        events_.eap("remote certificate verification", "success");
        events_.eap("completion", "success");
        handshake();
    } else {
        if (verdict == Admission::serverNotTrusted) {
            events_.eap("remote certificate verification", "self-signed certificate");
            events_.eap("local TLS alert", "unknown CA");
        }
        events_.eap("completion", "failure");
        refused(eapRefusedReason);
    }
}

void Station::handshake() {
    setState(State::fourWayHandshake);
    stepAfter(neighbourhood_.times.handshake, &Station::groupHandshake);
}

void Station::groupHandshake() {
    const AccessPoint* const accessPoint = reachedAccessPoint();
    if (accessPoint == nullptr) {
        connectionLost();
    } else if (accessPoint->busy) {
        stepAfter(neighbourhood_.times.handshake, &Station::groupHandshake);
    } else if (admission(currentNetwork()->config, *accessPoint) == Admission::refusedAtHandshake) {
        step_ = scheduler_.after(neighbourhood_.times.handshakeTimeout,
                                 [this] { refused(handshakeTimeoutReason); });
    } else {
        setState(State::groupHandshake);
        stepAfter(neighbourhood_.times.handshake, &Station::completed);
    }
}

void Station::completed() {
    Network* const network = networks_.find(*current_);
    network->failures = 0;
    setState(State::completed);
    if (const AccessPoint* const accessPoint = reachedAccessPoint()) {
        authMode_ = kaz::sim::authMode(network->config, *accessPoint);
        events_.changed("CurrentAuthMode");
    }
    accessPointsChanged();
}

void Station::refused(int reason) {
    pause(*networks_.find(*current_));
    leave(reason);
    searchAfter(neighbourhood_.times.reconnect);
}

void Station::refusedAtAuthentication(int status) {
    constexpr unsigned patience = 3;
    constexpr std::array<int, patience + 1> delays = {1, 5, 10, 50};  // multiples of the usual pause
    authStatusCode_ = status;
    events_.changed("AuthStatusCode");
    const unsigned before = std::min(failures_++, patience);
    if (failures_ > patience) {
        pause(*networks_.find(*current_));
    }
    forgetConnection();
    searchAfter(neighbourhood_.times.reconnect * delays.at(before));
}

void Station::pause(Network& network) {
    ++network.failures;
    network.pausedUntil =
        scheduler_.now() + neighbourhood_.times.retryDisabled * pauseFactor(network.failures);
}

void Station::leave(int reason) {
    if (connecting()) {
        disconnectReason_ = reason;
        events_.changed("DisconnectReason");
    }
    forgetConnection();
}

void Station::forgetConnection() {
    step_.cancel();
    loss_.cancel();
    const bool wasAssociated = state_ >= State::associated;
    setState(State::disconnected);
    bss_.reset();
    if (wasAssociated) {
        events_.changed("CurrentBSS");
    }
    setCurrentNetwork(std::nullopt);
    if (authMode_ != "INACTIVE") {
        authMode_ = "INACTIVE";
        events_.changed("CurrentAuthMode");
    }
}

void Station::setState(State state) {
    if (std::exchange(state_, state) != state) {
        events_.changed("State");
    }
}

void Station::setCurrentNetwork(std::optional<unsigned> id) {
    const bool wasAny = std::exchange(current_, id).has_value();
    const bool differs = std::exchange(announced_, id) != id;
    if (differs || (wasAny && !id)) {
        events_.changed("CurrentNetwork");
    }
}

}  // namespace kaz::sim
