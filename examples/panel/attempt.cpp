#include "attempt.h"

using Status = kaz::wifi::ConnectionInfo::Status;

std::optional<Attempt::Outcome> Attempt::see(const kaz::wifi::client::Snapshot& state) {
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
    linkUp_ = linkUp_ || info.status == Status::connectingIP;
    return state.connection.trouble == kaz::wifi::Cause::noAddress ? std::optional(Outcome::noAddress)
                                                                   : std::nullopt;
}
