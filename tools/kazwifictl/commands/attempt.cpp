#include "kazwifictl/commands/attempt.h"

#include <chrono>
#include <utility>

#include "kazwifictl/text/signal_strength.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;

namespace {

constexpr std::chrono::milliseconds patience{2000};
// Tolerances: this program sees an event shortly after the library, whose timeout may also expire late.
constexpr std::chrono::milliseconds early{10};
constexpr std::chrono::milliseconds late{300};

}  // namespace

Attempt::Attempt(std::string ssid, Clock::time_point requested)
    : ssid_(std::move(ssid)),
      requested_(requested),
      stageBegan_(requested),
      patienceBegan_(requested),
      last_(requested) {}

void Attempt::see(const Snapshot& before, const Snapshot& now) {
    if (!outcome_ && !now.running) {
        end(Outcome::stopped, now.time);
    }
    if (!outcome_ && now.scanning != before.scanning) {
        seeScanning(now.scanning, now.time);
    }
    if (!outcome_ && now.connection != before.connection) {
        seeConnection(now.connection, now.time);
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
        patienceBegan_ = time;
    }
}

void Attempt::seeConnection(const ConnectionInfo& info, Clock::time_point time) {
    const bool ours = info.ssid == ssid_;
    if (!begun()) {
        // Until the library starts the attempt, changes belong to the former connection.
        if (ours && info.status == Status::connectingWifi) {
            status_ = Status::connectingWifi;
            stageBegan_ = patienceBegan_ = last_ = time;
        }
        return;
    }
    if (info.status == Status::disconnected) {
        end(linkIsUp() ? Outcome::lost : endOfJoining(info), time);
        return;
    }
    if (!ours) {
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

Attempt::Outcome Attempt::endOfJoining(const ConnectionInfo& info) const {
    const auto waited = info.disconnectTime - patienceBegan_;
    const bool gaveUp = !scanning_ && waited >= patience - early && waited <= patience + late;
    return gaveUp ? Outcome::notAnswering : Outcome::refused;
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
