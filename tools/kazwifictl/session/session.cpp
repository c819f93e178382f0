#include "kazwifictl/session/session.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "base/signals_blocked.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;

namespace {

// Longer than an SSID, which has at most 32 bytes: so no network has such a name.
constexpr std::string_view fencePrefix = "kazwifictl: no network has a name as long as this ";

bool isFence(std::string_view ssid) {
    return ssid.starts_with(fencePrefix);
}

// A running supplicant is usually followed within this time. The question to a second Manager takes longer.
constexpr std::chrono::milliseconds headStart{300};
// Even a busy system answers within this time.
constexpr std::chrono::milliseconds answerLimit{5000};

// The timeout for poll(): the time left, rounded up, so that the deadline has passed when poll() returns.
int millisecondsUntil(Clock::time_point deadline) {
    constexpr std::chrono::milliseconds anHour{3'600'000};
    const auto now = Clock::now();
    if (deadline <= now) {
        return 0;
    }
    return static_cast<int>(deadline - now > anHour
                                ? anHour.count()
                                : std::chrono::ceil<std::chrono::milliseconds>(deadline - now).count());
}

Snapshot snapshotOf(wifi::Manager& manager) {
    const bool running =
        manager.isWifiStackInitialized();  // a supplicant that stops ends its scan without a callback
    wifi::ConnectionDetails details = manager.connectionDetails();
    return {Clock::now(),
            manager.isEnabled(),
            running,
            running && manager.isScanning(),
            manager.networks(),
            std::move(details.info),
            std::move(details.lastOutcome)};
}

}  // namespace

std::unique_ptr<wifi::Manager> makeManager() {
    const SignalsBlocked blocked;
    return std::make_unique<wifi::Manager>();
}

Session::Session(Interrupts& interrupts) : interrupts_(interrupts), manager_(makeManager()) {
    // The callbacks must not use manager_: the last ones run while it is being reset.
    const auto announce = [this, &manager = *manager_] { push(snapshotOf(manager)); };
    manager_->onEnabledChanged(announce);
    manager_->onScanningChanged(announce);
    manager_->onNetworksListChanged(announce);
    manager_->onConnectionDetailsChanged(announce);  // also after a change of the connection info
    // Reads what changed before the callbacks were registered. Later changes arrive through the callbacks.
    latest_ = snapshotOf(*manager_);
}

void Session::push(Snapshot snapshot) {
    const std::lock_guard lock(mutex_);
    arrivals_.push_back(std::move(snapshot));
    arrived_.set();
}

std::optional<Snapshot> Session::pop() {
    const std::lock_guard lock(mutex_);
    if (arrivals_.empty()) {
        return std::nullopt;
    }
    Snapshot snapshot = std::move(arrivals_.front());
    arrivals_.pop_front();
    if (arrivals_.empty()) {
        arrived_.clear();
    }
    return snapshot;
}

bool Session::next(Clock::time_point deadline, const Observer& observer) {
    for (;;) {
        std::array<pollfd, 2> waited{{{fd(), POLLIN, 0}, {interrupts_.fd(), POLLIN, 0}}};
        const int timeout = millisecondsUntil(deadline);
        ::poll(waited.data(), waited.size(), timeout);
        interrupts_.check();
        if (auto snapshot = pop()) {
            deliver(std::move(*snapshot), observer);
            return true;
        }
        if (timeout == 0) {
            return false;
        }
    }
}

bool Session::until(Clock::time_point deadline, const Condition& done, const Observer& observer) {
    while (!done(latest_)) {
        if (!next(deadline, observer)) {
            return false;
        }
    }
    return true;
}

void Session::takeAll(const Observer& observer) {
    while (auto snapshot = pop()) {
        deliver(std::move(*snapshot), observer);
    }
}

bool Session::untilRunning(Clock::time_point deadline) {
    return until(deadline, [](const Snapshot& now) { return now.running; });
}

Session::Start Session::start(std::chrono::milliseconds limit, bool patient) {
    const auto began = Clock::now();
    if (!untilRunning(began + std::min(headStart, limit))) {
        // A second Manager runs the fence. Here, it would spoil the record of a connection that may exist.
        Session other(interrupts_);
        if (!other.fence(std::max(limit, answerLimit))) {
            return Start::noAnswer;
        }
        if (other.latest_.running) {
            untilRunning(Clock::now() + requestLimit);
        } else if (patient && latest_.enabled) {
            untilRunning(began + limit);
        }
    }
    return latest_.running ? Start::running : Start::notRunning;
}

bool Session::fence(std::chrono::milliseconds limit, const Observer& observer) {
    // Each fence has its own name. With the name of the last fence, the record might not change, and no
    // callback would come.
    const std::string name = std::string(fencePrefix) + std::to_string(++fences_);
    manager_->connectConfigured(name);
    return until(
        Clock::now() + limit, [&](const Snapshot&) { return reached_ == name; }, observer);
}

void Session::close() {
    manager_.reset();
    takeAll();
}

void Session::deliver(Snapshot now, const Observer& observer) {
    takeFenceOut(now.connection);
    const Snapshot before = std::exchange(latest_, std::move(now));
    if (observer) {
        observer(before, latest_);
    }
}

void Session::takeFenceOut(ConnectionInfo& info) {
    const ConnectionInfo& former = latest_.connection;
    if (isFence(info.ssid)) {
        reached_ = info.ssid;
        info = former;
    } else if (isFence(info.disconnectSsid)) {
        info.disconnectSsid = former.disconnectSsid;
        info.disconnectReason = former.disconnectReason;
        info.disconnectTime = former.disconnectTime;
    }
}

}  // namespace kaz::ctl
