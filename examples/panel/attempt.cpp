#include "attempt.h"

#include <utility>

using kaz::wifi::ConnectionInfo;
using Status = kaz::wifi::ConnectionInfo::Status;

namespace {

constexpr std::chrono::milliseconds patience{2000};
constexpr std::chrono::milliseconds tolerance{500};  // the panel hears of things late
constexpr std::chrono::seconds patienceForAnAddress{30};

}  // namespace

Attempt::Attempt(std::string ssid, Clock::time_point requested)
    : ssid_(std::move(ssid)), patienceBegan_(requested) {}

std::optional<Attempt::Outcome> Attempt::see(const ConnectionInfo& info, bool scanning, bool running,
                                             Clock::time_point now) {
    if (std::exchange(scanning_, scanning) && !scanning) {
        patienceBegan_ = now;
    }
    const bool ours = info.ssid == ssid_ && info.status != Status::disconnected;
    if (!running) {
        return Outcome::stopped;
    }
    if (!begun_) {  // until the library takes the request up, it tells of what was before
        begun_ = ours;
        return std::nullopt;
    }
    if (!ours) {
        return end(info);
    }
    if (info.status == Status::connected) {
        return Outcome::connected;
    }
    if (info.status == Status::connectingIP && !std::exchange(linkUp_, true)) {
        linkUpSince_ = now;
    }
    if (linkUp_ && now - linkUpSince_ >= patienceForAnAddress) {
        return Outcome::noAddress;
    }
    return std::nullopt;
}

std::optional<Attempt::Outcome> Attempt::end(const ConnectionInfo& info) const {
    if (linkUp_) {
        return Outcome::lost;
    }
    const auto waited = info.disconnectTime - patienceBegan_;
    const bool gaveUp = waited >= patience - tolerance && waited <= patience + tolerance;
    return gaveUp ? Outcome::notAnswering : Outcome::refused;
}
