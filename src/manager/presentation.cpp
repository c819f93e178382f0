#include "manager/presentation.h"

#include <algorithm>
#include <utility>

namespace kaz::wifi {
namespace {

using Status = ConnectionInfo::Status;

// The record names an end by its time, network and cause.
bool sameConnection(const ConnectionInfo& former, const ConnectionInfo& next) {
    return former.ssid == next.ssid && former.disconnectTime == next.disconnectTime &&
           former.disconnectSsid == next.disconnectSsid && next.status != Status::disconnected;
}

}  // namespace

Presentation::Presentation(std::shared_ptr<TimeProvider> timeProvider)
    : timeProvider_(std::move(timeProvider)) {}

void Presentation::look(const ConnectionInfo& former, const ConnectionInfo& next) {
    followRoam(former, next);
    followAddress(former, next);
    live_ = next.status != Status::disconnected;
}

Cause Presentation::trouble() const {
    return trouble_ == Cause::none && silent_ && live_ ? Cause::supplicantSilent : trouble_;
}

void Presentation::followRoam(const ConnectionInfo& former, const ConnectionInfo& next) {
    const bool left = former.status == Status::connected && next.status != Status::connected;
    const bool late = roamEnd_ && timeProvider_->get() >= *roamEnd_;
    if (left && sameConnection(former, next)) {
        roamEnd_ = timeProvider_->get() + roamLimit;
    } else if (next.status == Status::connected || late || !sameConnection(former, next)) {
        roamEnd_.reset();
    }
    shown_ = roamEnd_ ? Status::connected : next.status;
}

void Presentation::followAddress(const ConnectionInfo& former, const ConnectionInfo& next) {
    if (next.status != Status::connectingIP) {
        addressSince_.reset();
    } else if (!addressSince_ || !sameConnection(former, next)) {
        addressSince_ = timeProvider_->get();
    }
    const bool limited = addressSince_ && addressTimeout_ > std::chrono::milliseconds::zero();
    const bool late = limited && timeProvider_->get() - *addressSince_ >= addressTimeout_;
    trouble_ = late ? Cause::noAddress : Cause::none;
}

std::optional<std::chrono::milliseconds> Presentation::remaining() const {
    std::optional<TimePoint> next = roamEnd_;
    if (addressSince_ && addressTimeout_ > std::chrono::milliseconds::zero() && trouble_ == Cause::none) {
        const TimePoint late = *addressSince_ + addressTimeout_;
        next = next ? std::min(*next, late) : late;
    }
    if (!next) {
        return std::nullopt;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - timeProvider_->get());
    return std::max(left, std::chrono::milliseconds::zero());
}

}  // namespace kaz::wifi
