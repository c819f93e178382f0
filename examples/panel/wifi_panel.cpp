#include "wifi_panel.h"

#include <chrono>
#include <utility>

#include "ssid_text.h"
#include "words.h"

using kaz::wifi::ConnectionInfo;
using kaz::wifi::ConnectResult;
using kaz::wifi::client::Snapshot;
using Status = kaz::wifi::ConnectionInfo::Status;

namespace {

constexpr std::chrono::seconds patienceForAnAddress{30};

}  // namespace

WifiPanel::WifiPanel(QObject* parent) : QObject(parent) {
    wifi_.manager().setAddressTimeout(patienceForAnAddress);
    connect(&arrivals_, &QSocketNotifier::activated, this, &WifiPanel::takeAll);
    takeAll();
}

void WifiPanel::takeAll() {
    while (auto state = wifi_.take()) {
        show(std::move(*state));
    }
}

void WifiPanel::show(Snapshot state) {
    const Snapshot before = std::exchange(state_, std::move(state));
    if (state_.running && !before.running) {
        wifi_.manager().scan();
    }
    networks_.update(state_.connection.info, state_.networks, state_.access);
    form_.setMethods(wifi_.manager().eapMethods(), wifi_.manager().phase2Methods());
    follow(before.connection.info);
    Q_EMIT changed();
}

void WifiPanel::follow(const ConnectionInfo& before) {
    const ConnectionInfo& info = state_.connection.info;
    if (attempt_) {
        followAttempt();
    } else if (info.status == Status::connected) {
        dismissProblem();
    } else if (before.status == Status::connected && info.status == Status::disconnected &&
               info.disconnectReason == ConnectionInfo::DisconnectReason::causedBySystem && state_.running) {
        fail(Attempt::Outcome::lost, state_.connection.lastOutcome, info.disconnectSsid);
    }
}

void WifiPanel::followAttempt() {
    const auto outcome = attempt_->see(state_);
    if (!outcome) {
        return;
    }
    const std::string ssid = attempt_->ssid();
    const kaz::wifi::Outcome why = attempt_->why();
    attempt_.reset();
    fail(*outcome, why, ssid);
    // Forget settings that did not work, or the supplicant would retry them.
    if (*outcome == Attempt::Outcome::failed && !attemptSaved_) {
        wifi_.manager().forgetNetwork(ssid);
    }
}

void WifiPanel::begin(const std::string& ssid, bool saved) {
    attempt_.emplace(ssid);
    attemptSaved_ = saved;
    dismissProblem();
}

// The user can try again where an access point took part.
void WifiPanel::fail(Attempt::Outcome outcome, const kaz::wifi::Outcome& why, const std::string& ssid) {
    problem_ = failureInWords(outcome, why, shownSsid(ssid));
    const bool tried = outcome == Attempt::Outcome::failed && why.stage >= kaz::wifi::Stage::authenticating;
    problemSsid_ = tried ? ssid : std::string();
    Q_EMIT changed();
}

void WifiPanel::setOn(bool on) {
    attempt_.reset();
    dismissProblem();
    wifi_.manager().setEnabled(on);
    state_.enabled = on;
    Q_EMIT changed();
}

QString WifiPanel::problemId() const {
    return networks_.find(problemSsid_) == nullptr ? QString() : idOfSsid(problemSsid_);
}

void WifiPanel::scan() {
    wifi_.manager().scan();
}

bool WifiPanel::prepare(const QString& networkId) {
    const NetworkModel::Row* network = networks_.find(ssidOfId(networkId));
    if (network == nullptr) {
        return false;
    }
    form_.begin(*network);
    return true;
}

void WifiPanel::prepareHidden() {
    form_.beginHidden();
}

void WifiPanel::submit() {
    const auto settings = form_.settings();
    const ConnectResult verdict = wifi_.manager().connect(settings, form_.certificates());
    if (verdict == ConnectResult::ok) {
        begin(settings.ssid, false);
    } else {  // the form refuses everything that the library refuses, but the library decides
        problem_ = problemInWords(verdict, settings.securityMode);
        Q_EMIT changed();
    }
    form_.clear();
}

void WifiPanel::joinSaved(const QString& networkId) {
    const NetworkModel::Row* network = networks_.find(ssidOfId(networkId));
    if (network != nullptr) {
        wifi_.manager().connectConfigured(network->ssid);
        begin(network->ssid, true);
    }
}

void WifiPanel::leave() {
    attempt_.reset();
    wifi_.manager().disconnect();
}

void WifiPanel::forget(const QString& networkId) {
    const std::string ssid = ssidOfId(networkId);
    if (attempt_ && attempt_->ssid() == ssid) {
        attempt_.reset();
    }
    wifi_.manager().forgetNetwork(ssid);
}

void WifiPanel::dismissProblem() {
    problem_.clear();
    problemSsid_.clear();
    Q_EMIT changed();
}
