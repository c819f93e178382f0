// Waiting for what happens on other threads and in other processes.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>

namespace kaz::test {

// The one limit of all tests that wait: only a fault reaches it, a busy machine does not.
inline constexpr std::chrono::seconds timeLimit{60};

// Asks again and again until the answer is yes. False when the limit passes first.
bool eventually(const std::function<bool()>& condition);

// Whether a window of 300 ms comes along in which the thread sleeps all the time.
bool fallsAsleep(pid_t thread);

// Counts events on one thread for another to wait for.
class Counter {
  public:
    void operator++();
    std::size_t value() const;
    // False when the count stays lower until the limit passes.
    bool reaches(std::size_t count) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::size_t count_ = 0;
};

}  // namespace kaz::test
