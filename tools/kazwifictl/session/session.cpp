#include "kazwifictl/session/session.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <utility>

#include "base/signals_blocked.h"

namespace kaz::ctl {

namespace {

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
    const auto announce = [this, &manager = *manager_] { push({snapshotOf(manager), 0, {}}); };
    manager_->onEnabledChanged(announce);
    manager_->onScanningChanged(announce);
    manager_->onNetworksListChanged(announce);
    manager_->onConnectionDetailsChanged(announce);  // also after a change of the connection info
    // Reads what changed before the callbacks were registered. Later changes arrive through the callbacks.
    latest_ = snapshotOf(*manager_);
}

void Session::push(Arrival arrival) {
    const std::lock_guard lock(mutex_);
    arrivals_.push_back(std::move(arrival));
    arrived_.set();
}

std::optional<Session::Arrival> Session::pop() {
    const std::lock_guard lock(mutex_);
    if (arrivals_.empty()) {
        return std::nullopt;
    }
    Arrival arrival = std::move(arrivals_.front());
    arrivals_.pop_front();
    if (arrivals_.empty()) {
        arrived_.clear();
    }
    return arrival;
}

bool Session::next(Clock::time_point deadline, const Observer& observer) {
    for (;;) {
        std::array<pollfd, 2> waited{{{fd(), POLLIN, 0}, {interrupts_.fd(), POLLIN, 0}}};
        const int timeout = millisecondsUntil(deadline);
        ::poll(waited.data(), waited.size(), timeout);
        interrupts_.check();
        if (auto arrival = pop()) {
            deliver(std::move(*arrival), observer);
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
    while (auto arrival = pop()) {
        deliver(std::move(*arrival), observer);
    }
}

Session::Start Session::start(std::chrono::milliseconds limit, bool patient) {
    const auto began = Clock::now();
    if (!carriedOut(std::max(limit, answerLimit))) {
        return Start::noAnswer;
    }
    if (!latest_.running && patient && latest_.enabled) {
        if (until(began + limit, [](const Snapshot& now) { return now.running; })) {
            carriedOut(answerLimit);  // the whole first state
        }
    }
    return latest_.running ? Start::running : Start::notRunning;
}

bool Session::carriedOut(std::chrono::milliseconds limit, const Observer& observer) {
    const unsigned mine = ++asked_;
    manager_->whenCarriedOut([this, mine, &manager = *manager_](const Failures& failures) {
        push({snapshotOf(manager), mine, failures});
    });
    return until(
        Clock::now() + limit, [this, mine](const Snapshot&) { return answered_ >= mine; }, observer);
}

void Session::close() {
    manager_.reset();
    takeAll();
}

void Session::deliver(Arrival arrival, const Observer& observer) {
    answered_ = std::max(answered_, arrival.answer);
    failures_.merge(arrival.failures);
    const Snapshot before = std::exchange(latest_, std::move(arrival.snapshot));
    if (observer) {
        observer(before, latest_);
    }
}

}  // namespace kaz::ctl
