#include "kazwifictl/commands/attempt.h"

#include <chrono>
#include <utility>

#include "kazwifictl/text/signal_strength.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;

Attempt::Attempt(std::string ssid, Clock::time_point requested)
    : ssid_(std::move(ssid)), requested_(requested), stageBegan_(requested), last_(requested) {}

Attempt::Attempt(std::string ssid, const Snapshot& now)
    : ssid_(std::move(ssid)),
      requested_(Clock::now()),
      stageBegan_(requested_),
      last_(requested_),
      status_(now.connection.info.status),
      scanning_(now.scanning),
      signal_(knownSignal(now.connection.info.signal)) {}

void Attempt::see(const Snapshot& before, const Snapshot& now) {
    if (!outcome_ && !now.running) {
        end(Outcome::stopped, now.time);
    }
    if (!outcome_ && now.scanning != before.scanning) {
        seeScanning(now.scanning, now.time);
    }
    if (!outcome_ && now.connection.info != before.connection.info) {
        seeConnection(now);
    }
}

std::optional<Stage::Kind> Attempt::current() const {
    if (!begun() || outcome_) {
        return std::nullopt;
    }
    if (linkIsUp()) {
        return Stage::Kind::address;
    }
    return scanning_ ? Stage::Kind::search : Stage::Kind::join;
}

void Attempt::seeScanning(bool scanning, Clock::time_point time) {
    if (scanning == scanning_) {
        return;
    }
    scanning_ = scanning;
    if (status_ != Status::connectingWifi) {
        return;
    }
    if (scanning) {
        stageBegan_ = time;
    } else {
        endStage(Stage::Kind::search, time);
    }
}

void Attempt::seeConnection(const Snapshot& now) {
    const ConnectionInfo& info = now.connection.info;
    const Clock::time_point time = now.time;
    const bool ours = info.ssid == ssid_;
    if (!begun()) {
        // Until the library starts the attempt, changes belong to the former connection.
        if (ours && info.status == Status::connectingWifi) {
            status_ = Status::connectingWifi;
            stageBegan_ = last_ = time;
        }
        return;
    }
    if (info.status == Status::disconnected) {
        failure_ = now.connection.lastOutcome;
        end(linkIsUp() ? Outcome::lost : Outcome::failed, time);
        return;
    }
    if (!ours) {
        failure_ = now.connection.lastOutcome;
        otherSsid_ = info.ssid;
        end(Outcome::other, time);
        return;
    }
    if (info.status == Status::connectingWifi) {
        status_ = info.status;
        return;
    }
    signal_ = knownSignal(info.signal);
    if (!linkIsUp()) {
        endStage(Stage::Kind::join, time);
    }
    status_ = info.status;
    if (status_ == Status::connected) {
        endStage(Stage::Kind::address, time);
        end(Outcome::connected, time);
    }
}

void Attempt::end(Outcome outcome, Clock::time_point time) {
    outcome_ = outcome;
    last_ = time;
}

void Attempt::endStage(Stage::Kind kind, Clock::time_point time) {
    stages_.push_back({kind, time - stageBegan_});
    stageBegan_ = last_ = time;
}

}  // namespace kaz::ctl
