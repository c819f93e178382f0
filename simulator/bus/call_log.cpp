#include "simulator/bus/call_log.h"

#include <utility>

namespace kaz::sim {

void CallLog::add(Call call) {
    {
        const std::lock_guard lock(mutex_);
        calls_.push_back(std::move(call));
    }
    changed_.notify_all();
}

std::vector<Call> CallLog::calls() const {
    const std::lock_guard lock(mutex_);
    return calls_;
}

void CallLog::forget() {
    const std::lock_guard lock(mutex_);
    calls_ = std::vector<Call>();  // releases the memory too, for tests that measure it
}

bool CallLog::waitUntil(const std::function<bool(const std::vector<Call>&)>& condition,
                        std::chrono::milliseconds limit) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return condition(calls_); });
}

}  // namespace kaz::sim
