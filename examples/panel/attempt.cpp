#include "attempt.h"

#include <utility>

using Status = kaz::wifi::ConnectionInfo::Status;

namespace {

constexpr std::chrono::seconds patienceForAnAddress{30};

}  // namespace

std::optional<Attempt::Outcome> Attempt::see(const kaz::wifi::client::Snapshot& state,
                                             Clock::time_point now) {
    const auto& info = state.connection.info;
    const bool ours = info.ssid == ssid_ && info.status != Status::disconnected;
    if (!state.running) {
        return Outcome::stopped;
    }
    if (!begun_) {  // before the library handles the request, it reports the former state
        begun_ = ours;
        return std::nullopt;
    }
    if (!ours) {
        why_ = state.connection.lastOutcome;
        return linkUp_ ? Outcome::lost : Outcome::failed;
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
