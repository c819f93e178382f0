#include "support/tracker_model/tracker_model.h"

#include <cstdint>

namespace kaz::test {
namespace {

using wifi::ConnectionInfo;
using Reason = ConnectionInfo::DisconnectReason;
using Status = ConnectionInfo::Status;

constexpr int connecting = 3;
constexpr int linkUp = 4;

std::string redacted(const std::string& ssid) {
    return wifi::Communicator::makeSsidRedactable(ssid);
}

}  // namespace

void TrackerModel::begin(const std::string& ssid, Reason reason) {
    end(reason);
    request_.reset();
    attempt_ = Attempt{ssid, clock_->get()};
    info_.status = Status::connectingWifi;
    info_.ssid = ssid;
}

void TrackerModel::end(Reason reason) {
    attempt_.reset();
    if (info_.status != Status::disconnected) {
        info_ = {Status::disconnected, "", 0, reason, clock_->get(), info_.ssid};
    }
    info_.ssid = "";
    info_.signal = -100;
}

void TrackerModel::notifyAboutConnectionAttempt(const std::string& ssid) {
    begin(ssid, Reason::causedByUser);
}

void TrackerModel::notifyAboutDisconnect() {
    end(Reason::causedByUser);
    request_ = clock_->get();
}

void TrackerModel::notifyAboutForget(const std::string& ssid) {
    const bool live = info_.status != Status::disconnected;
    if (live && info_.ssid == ssid) {
        notifyAboutDisconnect();
    }
    if (!live && info_.disconnectSsid == ssid && info_.disconnectReason == Reason::causedBySystem) {
        info_.disconnectReason = Reason::causedByUser;
        info_.disconnectTime = clock_->get();
    }
}

void TrackerModel::setCurrentNetworkSsid(const std::optional<std::string>& ssid) {
    if (!ssid || (attempt_ && attempt_->ssid == *ssid)) {
        return;
    }
    begin(*ssid, Reason::causedBySystem);
}

void TrackerModel::setScanning(bool scanning) {
    const bool ended = scanning_ && !scanning;
    scanning_ = scanning;
    if (ended && attempt_) {
        attempt_->since = clock_->get();
    }
}

void TrackerModel::setCurrentBss(const std::optional<wifi::Communicator::BssProperties>& bss) {
    bss_ = bss;
    bssTime_ = clock_->get();
    update();
}

void TrackerModel::setSupplicantStatus(wifi::Communicator::SupplicantConnectionStatus status) {
    status_ = static_cast<int>(status);
    statusTime_ = clock_->get();
    update();
}

void TrackerModel::setSignalStrength(int dBm) {
    if (bss_) {
        bss_->signal = dBm;
        update();
    }
}

void TrackerModel::setNetworkdIsOnline(bool online) {
    online_ = online;
    update();
}

void TrackerModel::setSupplicantState(bool on) {
    info_ = ConnectionInfo();
    if (!on) {
        end(Reason::causedBySystem);
        request_.reset();
        bss_.reset();
        status_ = 1;
        bssTime_ = statusTime_ = clock_->get();
        scanning_ = false;
    }
}

ConnectionInfo TrackerModel::getConnectionInfo() {
    update();
    return info_;
}

std::optional<std::chrono::milliseconds> TrackerModel::getActiveTimeout() const {
    if (!attempt_ || attempt_->sawLinkSetUp || scanning_) {
        return std::nullopt;
    }
    const std::int64_t elapsed = std::chrono::nanoseconds(clock_->get() - attempt_->since).count();
    return std::chrono::milliseconds((2'000'000'000 - elapsed) / 1'000'000);
}

void TrackerModel::update() {
    if (attempt_) {
        const Fate fate = fateOfAttempt();
        if (fate != Fate::waits) {
            logEnd(fate);
            attempt_.reset();
        }
    }
    if (!attempt_) {
        followSupplicant();
    }
    if (bss_ && bss_->ssid == info_.ssid) {
        info_.signal = bss_->signal;
    }
}

TrackerModel::Fate TrackerModel::fateOfAttempt() {
    if (const auto left = getActiveTimeout(); left && left->count() <= 0) {
        return Fate::timedOut;
    }
    const bool statusCounts = statusTime_ >= attempt_->since;
    const bool bssCounts = statusCounts && bssTime_ >= attempt_->since && bss_.has_value();
    if (statusCounts && attempt_->sawLinkSetUp && status_ < connecting) {
        return Fate::fellBack;
    }
    attempt_->sawLinkSetUp |= statusCounts && status_ == connecting;
    if (bssCounts && bss_->ssid == attempt_->ssid && status_ == linkUp) {
        return Fate::succeeded;
    }
    if (bssCounts && bss_->ssid != attempt_->ssid && (status_ == connecting || status_ == linkUp)) {
        return Fate::wentElsewhere;
    }
    return Fate::waits;
}

void TrackerModel::logEnd(Fate fate) {
    const std::string wanted = redacted(attempt_->ssid);
    switch (fate) {
        case Fate::waits:
        case Fate::succeeded:
            break;
        case Fate::timedOut:
            texts_.push_back("warning: No response from wpa_supplicant, assuming we are disconnected from " +
                             wanted);
            break;
        case Fate::fellBack:
            texts_.push_back("debug: Disconnected after attempted connection to " + wanted);
            break;
        case Fate::wentElsewhere:
            texts_.push_back("warning: Connected to " + redacted(bss_->ssid) +
                             " while attempting to connect to " + wanted);
            break;
    }
}

void TrackerModel::followSupplicant() {
    if (request_ && statusTime_ < *request_) {
        return;
    }
    if (status_ >= 0 && status_ < connecting && info_.status != Status::disconnected) {
        end(request_ ? Reason::causedByUser : Reason::causedBySystem);
        request_.reset();
    }
    if ((status_ == connecting || status_ == linkUp) && bss_) {
        followLink();
    }
}

void TrackerModel::followLink() {
    const ConnectionInfo before = info_;
    const Status upStatus = online_ ? Status::connected : Status::connectingIP;
    info_.status = status_ == connecting ? Status::connectingWifi : upStatus;
    info_.ssid = bss_->ssid;
    if (before.ssid != info_.ssid && before.status != Status::disconnected) {
        info_.disconnectSsid = before.ssid;
        info_.disconnectReason = Reason::causedBySystem;
        info_.disconnectTime = clock_->get();
    }
}

}  // namespace kaz::test
