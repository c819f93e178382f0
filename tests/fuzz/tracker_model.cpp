#include "fuzz/tracker_model.h"

#include <utility>

namespace kaz::fuzz {
namespace {

using Published = wifi::ConnectionInfo::Status;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr nanoseconds patience{2'000'000'000};

std::string redactable(const std::string& ssid) {
    return wifi::Communicator::makeSsidRedactable(ssid);
}

}  // namespace

void TrackerModel::record(Cause cause, Time now) {
    info_.disconnectSsid = info_.ssid;
    info_.disconnectReason = cause;
    info_.disconnectTime = now;
}

void TrackerModel::drop(Cause cause, Time now) {
    if (isLive()) {
        record(cause, now);
    }
    info_.status = Published::disconnected;
    info_.ssid.clear();
    info_.signal = wifi::NoSignaldBm;
}

void TrackerModel::begin(const std::string& ssid, Cause cause, Time now) {
    drop(cause, now);
    request_.reset();
    attempt_ = Attempt{ssid, now};
    info_.status = Published::connectingWifi;
    info_.ssid = ssid;
}

void TrackerModel::userDisconnects(Time now) {
    drop(Cause::causedByUser, now);
    attempt_.reset();
    request_ = now;
}

void TrackerModel::userForgets(const std::string& ssid, Time now) {
    if (isLive()) {
        if (info_.ssid == ssid) {
            userDisconnects(now);
        }
        return;
    }
    if (info_.disconnectSsid == ssid && info_.disconnectReason == Cause::causedBySystem) {
        info_.disconnectReason = Cause::causedByUser;
        info_.disconnectTime = now;
    }
}

void TrackerModel::supplicantSelects(const std::optional<std::string>& ssid, Time now) {
    const bool confirms = attempt_ && ssid && attempt_->ssid == *ssid;
    if (ssid && !confirms) {
        begin(*ssid, Cause::causedBySystem, now);
    }
}

void TrackerModel::scanning(bool runs, Time now) {
    if (scanning_ && !runs && attempt_) {
        attempt_->since = now;
    }
    scanning_ = runs;
}

void TrackerModel::bss(const std::optional<Bss>& bss, Time now) {
    bss_ = {bss, now};
    settle(now);
}

void TrackerModel::status(Status status, Time now) {
    status_ = {status, now};
    settle(now);
}

void TrackerModel::signal(int dBm, Time now) {
    if (bss_.value) {
        bss_.value->signal = dBm;
        settle(now);
    }
}

void TrackerModel::online(bool online, Time now) {
    online_ = online;
    settle(now);
}

void TrackerModel::supplicantWent(Time now) {
    info_ = {};
    info_.signal = wifi::NoSignaldBm;
    attempt_.reset();
    request_.reset();
    bss_ = {std::nullopt, now};
    status_ = {Status::InterfaceDisabled, now};
    scanning_ = false;
}

std::optional<milliseconds> TrackerModel::timeLeft(Time now) const {
    if (!attempt_ || attempt_->linkWasSetUp || scanning_) {
        return std::nullopt;
    }
    const nanoseconds left = attempt_->since + patience - now;
    return milliseconds(left.count() / 1'000'000);
}

void TrackerModel::settle(Time now) {
    if (attempt_ && attemptIsOver(now)) {
        attempt_.reset();
    }
    if (!attempt_ && !(request_ && status_.at < *request_)) {
        follow(now);
    }
    if (bss_.value && bss_.value->ssid == info_.ssid) {
        info_.signal = bss_.value->signal;
    }
}

bool TrackerModel::attemptIsOver(Time now) {
    const auto left = timeLeft(now);
    if (left && *left <= milliseconds(0)) {
        log_.push_back("No response from wpa_supplicant, assuming we are disconnected from " +
                       redactable(attempt_->ssid));
        return true;
    }
    return status_.at >= attempt_->since && attemptMeetsItsEnd();
}

// The supplicant has said something since the attempt began.
bool TrackerModel::attemptMeetsItsEnd() {
    const bool linkIsDown = status_.value < Status::Connecting;
    if (linkIsDown && attempt_->linkWasSetUp) {
        log_.push_back("Disconnected after attempted connection to " + redactable(attempt_->ssid));
        return true;
    }
    attempt_->linkWasSetUp = attempt_->linkWasSetUp || status_.value == Status::Connecting;
    if (linkIsDown || status_.value > Status::Connected || !bss_.value || bss_.at < attempt_->since) {
        return false;
    }
    if (bss_.value->ssid == attempt_->ssid) {
        return status_.value == Status::Connected;
    }
    log_.push_back("Connected to " + redactable(bss_.value->ssid) + " while attempting to connect to " +
                   redactable(attempt_->ssid));
    return true;
}

void TrackerModel::follow(Time now) {
    const auto number = static_cast<int>(status_.value);
    if (number >= 0 && number <= 2 && isLive()) {
        drop(request_ ? Cause::causedByUser : Cause::causedBySystem, now);
        request_.reset();
    } else if (number == 3) {
        followLink(Published::connectingWifi, now);
    } else if (number == 4) {
        followLink(online_ ? Published::connected : Published::connectingIP, now);
    }
}

void TrackerModel::followLink(Published status, Time now) {
    if (!bss_.value) {
        return;
    }
    if (isLive() && info_.ssid != bss_.value->ssid) {
        record(Cause::causedBySystem, now);
    }
    info_.status = status;
    info_.ssid = bss_.value->ssid;
}

std::vector<std::string> TrackerModel::takeLog() {
    return std::exchange(log_, {});
}

}  // namespace kaz::fuzz
