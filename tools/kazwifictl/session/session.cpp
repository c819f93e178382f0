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
// A person who waits longer without a word thinks that the program hangs.
constexpr std::chrono::milliseconds slowAfter{1000};

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

wifi::client::Follower makeFollower() {
    const SignalsBlocked blocked;
    return {};
}

}  // namespace

Session::Session(Interrupts& interrupts) : interrupts_(interrupts), follower_(makeFollower()) {
    deliverNext({});  // the state at this moment
}

bool Session::next(Clock::time_point deadline, const Observer& observer) {
    for (;;) {
        // Without events, poll() reports only that the other end is closed.
        std::array<pollfd, 3> waited{
            {{fd(), POLLIN, 0}, {interrupts_.fd(), POLLIN, 0}, {readerGone_ ? -1 : reader_, 0, 0}}};
        const int timeout = millisecondsUntil(deadline);
        ::poll(waited.data(), waited.size(), timeout);
        interrupts_.check();
        if (deliverNext(observer)) {
            return true;
        }
        readerGone_ = readerGone_ || waited[2].revents != 0;
        if (timeout == 0 || readerGone_) {
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
    while (deliverNext(observer)) {
    }
}

Session::Start Session::start(std::chrono::milliseconds limit, bool patient,
                              const std::function<void()>& slow) {
    slow_ = slow;
    const auto began = Clock::now();
    if (!carriedOut(std::max(limit, answerLimit))) {
        return Start::noAnswer;
    }
    if (!latest_.running && patient && latest_.enabled &&
        untilSlowly(began + limit, [](const Snapshot& now) { return now.running; }, {})) {
        carriedOut(answerLimit);  // the whole first state
    }
    return latest_.running ? Start::running : Start::notRunning;
}

bool Session::carriedOut(std::chrono::milliseconds limit, const Observer& observer) {
    const unsigned mine = follower_.ask();
    return untilSlowly(
        Clock::now() + limit, [mine](const Snapshot& now) { return now.answered >= mine; }, observer);
}

bool Session::untilSlowly(Clock::time_point deadline, const Condition& done, const Observer& observer) {
    const auto patience = Clock::now() + slowAfter;
    if (patience < deadline && slow_) {
        if (until(patience, done, observer)) {
            return true;
        }
        slow_();
    }
    return until(deadline, done, observer);
}

void Session::close() {
    follower_.close();
    takeAll();
}

bool Session::deliverNext(const Observer& observer) {
    auto next = follower_.take();
    if (!next) {
        return false;
    }
    next->failures.merge(failures_);
    failures_ = std::move(next->failures);
    const Snapshot before = std::exchange(latest_, Snapshot(std::move(*next)));
    if (observer) {
        observer(before, latest_);
    }
    return true;
}

}  // namespace kaz::ctl
