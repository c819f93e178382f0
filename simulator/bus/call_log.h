#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace kaz::sim {

// A method call that a simulated service received.
struct Call {
    std::string peer;  // "supplicant", "systemd" or "networkd"
    std::string path;
    std::string interface;
    std::string member;
    std::string arguments;  // a JSON array
};

// Every call in the order of arrival, also calls with a fault. Callable from any thread.
class CallLog {
  public:
    void add(Call call);
    std::vector<Call> calls() const;
    void forget();

    // Waits until the condition is true for the calls so far. Returns false on timeout.
    bool waitUntil(const std::function<bool(const std::vector<Call>&)>& condition,
                   std::chrono::milliseconds limit) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Call> calls_;
};

}  // namespace kaz::sim
