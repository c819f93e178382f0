#include "support/call_log/call_log.h"

#include "support/waiting/waiting.h"

#include <algorithm>
#include <utility>

namespace kaz::test {

void CallLog::add(std::string call) {
    const std::lock_guard lock(mutex_);
    calls_.push_back(std::move(call));
    changed_.notify_all();
}

CallLog::Calls CallLog::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

CallLog::Calls CallLog::take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
}

bool CallLog::waitFor(const std::function<bool(const Calls&)>& predicate) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeLimit, [&] { return predicate(calls_); });
}

bool CallLog::waitForCall(std::string_view part) const {
    return waitFor([&](const Calls& calls) {
        return std::any_of(calls.begin(), calls.end(),
                           [&](const std::string& call) { return call.find(part) != std::string::npos; });
    });
}

}  // namespace kaz::test
