#include "attempt.h"

#include <algorithm>
#include <utility>

using Status = kaz::wifi::ConnectionInfo::Status;

namespace {

constexpr std::chrono::milliseconds patience{2000};
// The library and the panel both notice the timeout a little late.
constexpr std::chrono::milliseconds early{200};
constexpr std::chrono::milliseconds late{500};
constexpr std::chrono::seconds patienceForAnAddress{30};

}  // namespace

Attempt::Attempt(std::string ssid, Clock::time_point requested)
    : ssid_(std::move(ssid)), patienceBegan_(requested) {}

std::optional<Attempt::Outcome> Attempt::see(const Sight& sight) {
    const Status status = sight.info.status;
    const bool ours = sight.info.ssid == ssid_ && status != Status::disconnected;
    if (!sight.running) {
        return Outcome::stopped;
    }
    if (!begun_) {  // before the library handles the request, it reports the former state
        begun_ = ours;
        return std::nullopt;
    }
    if (!ours) {
        return end(sight);
    }
    if (status == Status::connected) {
        return Outcome::connected;
    }
    if (!sight.scanning) {
        patienceBegan_ = std::max(patienceBegan_, sight.scanningChanged);
    }
    if (status == Status::connectingIP && !std::exchange(linkUp_, true)) {
        linkUpSince_ = sight.now;
    }
    if (linkUp_ && sight.now - linkUpSince_ >= patienceForAnAddress) {
        return Outcome::noAddress;
    }
    return std::nullopt;
}

Attempt::Outcome Attempt::end(const Sight& sight) const {
    if (linkUp_) {
        return Outcome::lost;
    }
    const auto ended = sight.info.disconnectTime;
    const bool scannedBefore = !sight.scanning && sight.scanningChanged <= ended;
    const auto waited =
        ended - (scannedBefore ? std::max(patienceBegan_, sight.scanningChanged) : patienceBegan_);
    const bool gaveUp = waited >= patience - early && waited <= patience + late;
    return gaveUp ? Outcome::notAnswering : Outcome::refused;
}
