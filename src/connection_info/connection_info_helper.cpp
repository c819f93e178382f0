#include "connection_info/connection_info_helper.h"

#include "base/log.h"

#include <utility>

namespace kaz::wifi {
namespace {

using Reason = ConnectionInfo::DisconnectReason;
using Status = ConnectionInfo::Status;
using SupplicantStatus = Communicator::SupplicantConnectionStatus;

constexpr std::chrono::seconds longLinkSetup{10};

bool isLinkUpOrComing(SupplicantStatus status) {
    return status == SupplicantStatus::Connecting || status == SupplicantStatus::Connected;
}

// Nothing reported yet counts as down.
bool isLinkDown(SupplicantStatus status) {
    return status == SupplicantStatus{} || status == SupplicantStatus::InterfaceDisabled ||
           status == SupplicantStatus::Disconnected;
}

}  // namespace

ConnectionInfoHelper::ConnectionInfoHelper(std::shared_ptr<TimeProvider> timeProvider)
    : timeProvider_(std::move(timeProvider)) {}

void ConnectionInfoHelper::notifyAboutConnectionAttempt(std::string ssid) {
    internalStartAttempt(std::move(ssid), true);
}

void ConnectionInfoHelper::notifyAboutDisconnect() {
    internalResetAttemptInfo();
    disconnectRequestTime_ = timeProvider_->get();
    internalSetDisconnected(true);
}

void ConnectionInfoHelper::notifyAboutForget(const std::string& ssid) {
    if (info_.status != Status::disconnected) {
        if (info_.ssid == ssid) {
            notifyAboutDisconnect();
        }
    } else if (info_.disconnectSsid == ssid && info_.disconnectReason == Reason::causedBySystem) {
        info_.disconnectReason = Reason::causedByUser;
        info_.disconnectTime = timeProvider_->get();
    }
}

void ConnectionInfoHelper::setCurrentNetworkSsid(std::optional<std::string> ssid) {
    const bool confirmsAttempt = attempt_ && ssid == attempt_->ssid;
    if (ssid && !confirmsAttempt) {
        internalStartAttempt(std::move(*ssid), false);
    }
}

void ConnectionInfoHelper::setScanning(bool scanning) {
    if (scanning_ == scanning) {
        return;
    }
    scanning_ = scanning;
    if (!scanning_ && attempt_) {
        attempt_->timestamp = timeProvider_->get();
    }
}

void ConnectionInfoHelper::setCurrentBss(std::optional<Communicator::BssProperties> bss) {
    currentBss_ = std::move(bss);
    currentBssTime_ = timeProvider_->get();
    internalUpdate();
}

void ConnectionInfoHelper::setSupplicantStatus(Communicator::SupplicantConnectionStatus status) {
    supplicantStatus_ = status;
    supplicantStatusTime_ = timeProvider_->get();
    internalUpdate();
}

void ConnectionInfoHelper::setSignalStrength(int dBm) {
    if (currentBss_) {
        currentBss_->signal = dBm;
        internalUpdate();
    }
}

void ConnectionInfoHelper::setNetworkdIsOnline(bool online) {
    networkdIsOnline_ = online;
    internalUpdate();
}

void ConnectionInfoHelper::setSupplicantState(bool on) {
    info_ = ConnectionInfo();
    if (on) {
        return;
    }
    internalSetDisconnected(false);
    internalResetAttemptInfo();
    currentBss_.reset();
    currentBssTime_ = timeProvider_->get();
    supplicantStatus_ = SupplicantStatus::InterfaceDisabled;
    supplicantStatusTime_ = timeProvider_->get();
    scanning_ = false;
    internalUpdate();
}

ConnectionInfo ConnectionInfoHelper::getConnectionInfo() {
    internalUpdate();
    return info_;
}

std::optional<std::chrono::milliseconds> ConnectionInfoHelper::getActiveTimeout() const {
    if (!attempt_ || attempt_->linkSetupSeen || scanning_) {
        return std::nullopt;
    }
    const auto left = AttemptTimeout - (timeProvider_->get() - attempt_->timestamp);
    return std::chrono::duration_cast<std::chrono::milliseconds>(left);
}

bool ConnectionInfoHelper::linkUpOrComing() const {
    return isLinkUpOrComing(supplicantStatus_);
}

bool ConnectionInfoHelper::connectedToUnknownBss() const {
    return attempt_ && supplicantStatus_ == SupplicantStatus::Connected &&
           supplicantStatusTime_ >= attempt_->timestamp;
}

bool ConnectionInfoHelper::attemptStandsStill() const {
    return attempt_ && attempt_->linkSetupSeen && timeProvider_->get() - attempt_->timestamp >= longLinkSetup;
}

void ConnectionInfoHelper::internalUpdate() {
    internalGiveUpExpiredAttempt();
    Next next = attempt_ ? internalUpdateAttempt() : Next::status;
    if (next == Next::status) {
        next = internalUpdateStatus();
    }
    if (next == Next::signal) {
        internalUpdateSignal();
    }
}

void ConnectionInfoHelper::internalGiveUpExpiredAttempt() {
    const auto left = getActiveTimeout();
    if (left && *left <= std::chrono::milliseconds::zero()) {
        log::warn("No response from wpa_supplicant, assuming we are disconnected from {}",
                  Communicator::makeSsidRedactable(attempt_->ssid));
        attempt_.reset();
    }
}

ConnectionInfoHelper::Next ConnectionInfoHelper::internalUpdateAttempt() {
    if (supplicantStatusTime_ < attempt_->timestamp) {
        return Next::signal;
    }
    if (supplicantStatus_ == SupplicantStatus::Connecting) {
        attempt_->linkSetupSeen = true;
    } else if (supplicantStatus_ < SupplicantStatus::Connecting && attempt_->linkSetupSeen) {
        log::debug("Disconnected after attempted connection to {}",
                   Communicator::makeSsidRedactable(attempt_->ssid));
        attempt_.reset();
        return Next::status;
    }
    if (currentBssTime_ < attempt_->timestamp) {
        return Next::signal;
    }
    if (!currentBss_) {
        return Next::stop;
    }
    if (currentBss_->ssid == attempt_->ssid) {
        if (supplicantStatus_ != SupplicantStatus::Connected) {
            return Next::signal;
        }
        attempt_.reset();
        return Next::status;
    }
    if (isLinkUpOrComing(supplicantStatus_)) {
        log::warn("Connected to {} while attempting to connect to {}",
                  Communicator::makeSsidRedactable(currentBss_->ssid),
                  Communicator::makeSsidRedactable(attempt_->ssid));
        attempt_.reset();
        return Next::status;
    }
    return Next::signal;
}

ConnectionInfoHelper::Next ConnectionInfoHelper::internalUpdateStatus() {
    if (disconnectRequestTime_ && supplicantStatusTime_ < *disconnectRequestTime_) {
        return Next::signal;
    }
    if (isLinkDown(supplicantStatus_)) {
        if (info_.status != Status::disconnected) {
            const bool byUser = disconnectRequestTime_.has_value();
            disconnectRequestTime_.reset();
            internalSetDisconnected(byUser);
        }
        return Next::signal;
    }
    if (supplicantStatus_ == SupplicantStatus::Connecting) {
        return internalFollowLink(Status::connectingWifi);
    }
    if (supplicantStatus_ == SupplicantStatus::Connected) {
        return internalFollowLink(networkdIsOnline_ ? Status::connected : Status::connectingIP);
    }
    return Next::signal;
}

ConnectionInfoHelper::Next ConnectionInfoHelper::internalFollowLink(ConnectionInfo::Status status) {
    if (!currentBss_) {
        return Next::stop;
    }
    const bool sameSsid = info_.ssid == currentBss_->ssid;
    if (sameSsid && info_.status == status) {
        return Next::signal;
    }
    if (!sameSsid && info_.status != Status::disconnected) {
        internalRecordDisconnect(Reason::causedBySystem);
    }
    info_.status = status;
    info_.ssid = currentBss_->ssid;
    info_.signal = Communicator::NoSignaldBm;
    return Next::signal;
}

void ConnectionInfoHelper::internalUpdateSignal() {
    if (currentBss_ && currentBss_->ssid == info_.ssid) {
        info_.signal = currentBss_->signal;
    }
}

void ConnectionInfoHelper::internalStartAttempt(std::string ssid, bool byUser) {
    internalResetAttemptInfo();
    attempt_ = AttemptInfo{std::move(ssid), timeProvider_->get(), false};
    internalSetDisconnected(byUser);
    info_.status = Status::connectingWifi;
    info_.ssid = attempt_->ssid;
}

void ConnectionInfoHelper::internalSetDisconnected(bool byUser) {
    if (info_.status != Status::disconnected) {
        internalRecordDisconnect(byUser ? Reason::causedByUser : Reason::causedBySystem);
    }
    info_.status = Status::disconnected;
    info_.ssid.clear();
    info_.signal = Communicator::NoSignaldBm;
}

void ConnectionInfoHelper::internalRecordDisconnect(ConnectionInfo::DisconnectReason reason) {
    info_.disconnectSsid = info_.ssid;
    info_.disconnectReason = reason;
    info_.disconnectTime = timeProvider_->get();
}

void ConnectionInfoHelper::internalResetAttemptInfo() {
    attempt_.reset();
    disconnectRequestTime_.reset();
}

}  // namespace kaz::wifi
