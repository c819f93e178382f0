#include "wifi_panel.h"

#include <chrono>
#include <utility>

#include "ssid_text.h"
#include "words.h"

using kaz::wifi::ConnectionInfo;
using kaz::wifi::ConnectResult;
using kaz::wifi::SecurityMode;
using Status = kaz::wifi::ConnectionInfo::Status;

WifiPanel::WifiPanel(QObject* parent) : QObject(parent) {
    attemptClock_.setInterval(std::chrono::seconds(1));
    connect(&attemptClock_, &QTimer::timeout, this, &WifiPanel::refresh);
    const auto wakeUp = [this] { wake(); };
    wifi_.onEnabledChanged(wakeUp);
    wifi_.onScanningChanged([this] {
        scanningChanged_ = Attempt::Clock::now();
        wake();
    });
    wifi_.onNetworksListChanged(wakeUp);
    wifi_.onConnectionInfoChanged(wakeUp);
    refresh();
}

// Runs on the Manager's thread. Several changes queue one refresh, which reads the latest state. Qt drops a queued
// refresh when the panel is destroyed.
void WifiPanel::wake() {
    if (!awake_.exchange(true)) {
        QMetaObject::invokeMethod(this, &WifiPanel::refresh, Qt::QueuedConnection);
    }
}

void WifiPanel::refresh() {
    awake_ = false;  // before reading: a later change queues another refresh
    on_ = wifi_.isEnabled();
    scanning_ = wifi_.isScanning();
    const bool ran = std::exchange(running_, wifi_.isWifiStackInitialized());
    if (running_ && !ran) {
        wifi_.scan();
    }
    const auto info = wifi_.connectionInfo();
    networks_.update(info, wifi_.networks());
    form_.setMethods(wifi_.eapMethods(), wifi_.phase2Methods());
    follow(info);
    Q_EMIT changed();
}

void WifiPanel::follow(const ConnectionInfo& info) {
    const ConnectionInfo before = std::exchange(connection_, info);
    if (attempt_) {
        followAttempt(info);
    } else if (info.status == Status::connected) {
        dismissProblem();
    } else if (before.status == Status::connected && info.status == Status::disconnected &&
               info.disconnectReason == ConnectionInfo::DisconnectReason::causedBySystem && running_) {
        fail(Attempt::Outcome::lost, info.disconnectSsid);
    }
}

void WifiPanel::followAttempt(const ConnectionInfo& info) {
    const auto outcome = attempt_->see({info, running_, scanning_, scanningChanged_, Attempt::Clock::now()});
    if (!outcome) {
        return;
    }
    const std::string ssid = attempt_->ssid();
    endAttempt();
    fail(*outcome, ssid);
    // Forget settings that did not work, or the supplicant would retry them.
    const bool useless = *outcome == Attempt::Outcome::refused || *outcome == Attempt::Outcome::notAnswering;
    if (useless && !attemptSaved_) {
        wifi_.forgetNetwork(ssid);
    }
}

void WifiPanel::begin(const std::string& ssid, SecurityMode security, bool saved) {
    attempt_.emplace(ssid, Attempt::Clock::now());
    attemptSecurity_ = security;
    attemptSaved_ = saved;
    attemptClock_.start();
    dismissProblem();
}

void WifiPanel::endAttempt() {
    attempt_.reset();
    attemptClock_.stop();
}

void WifiPanel::fail(Attempt::Outcome outcome, const std::string& ssid) {
    problem_ = failureInWords(outcome, shownSsid(ssid), attemptSecurity_, attemptSaved_);
    problemSsid_ = outcome == Attempt::Outcome::refused ? ssid : std::string();
}

void WifiPanel::setOn(bool on) {
    endAttempt();
    dismissProblem();
    wifi_.setEnabled(on);
    refresh();
}

QString WifiPanel::problemId() const {
    return networks_.find(problemSsid_) == nullptr ? QString() : idOfSsid(problemSsid_);
}

void WifiPanel::scan() {
    wifi_.scan();
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
    const ConnectResult verdict = wifi_.connect(settings, form_.certificates());
    if (verdict == ConnectResult::ok) {
        begin(settings.ssid, settings.securityMode, false);
    } else {  // the form refuses everything that the library refuses, but the library decides
        problem_ = problemInWords(verdict, settings.securityMode);
        Q_EMIT changed();
    }
    form_.clear();
}

void WifiPanel::joinSaved(const QString& networkId) {
    const NetworkModel::Row* network = networks_.find(ssidOfId(networkId));
    if (network != nullptr) {
        wifi_.connectConfigured(network->ssid);
        begin(network->ssid, network->security, true);
    }
}

void WifiPanel::leave() {
    endAttempt();
    wifi_.disconnect();
}

void WifiPanel::forget(const QString& networkId) {
    const std::string ssid = ssidOfId(networkId);
    if (attempt_ && attempt_->ssid() == ssid) {
        endAttempt();
    }
    wifi_.forgetNetwork(ssid);
}

void WifiPanel::dismissProblem() {
    problem_.clear();
    problemSsid_.clear();
    Q_EMIT changed();
}
