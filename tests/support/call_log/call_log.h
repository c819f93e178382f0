#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::test {

// Calls in order, each as a line of text. Any thread may add and read.
class CallLog {
  public:
    using Calls = std::vector<std::string>;

    void add(std::string call);
    Calls calls() const;

    // The calls since the last take().
    Calls take();

    // Blocks until the predicate is true for the calls since the last take(). Returns false on timeout.
    bool waitFor(const std::function<bool(const Calls&)>& predicate) const;

    // Blocks until a call contains this text.
    bool waitForCall(std::string_view part) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Calls calls_;
};

}  // namespace kaz::test
