// Waits for events on other threads and in other processes.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <future>
#include <mutex>

namespace kaz::test {

// The time limit of all waiting tests. Only a fault reaches it, not a busy machine.
inline constexpr std::chrono::seconds timeLimit{60};

// Repeats the question until the answer is yes. Returns false on timeout.
bool eventually(const std::function<bool()>& condition);

// Waits for 300 ms in which the thread sleeps all the time. Returns false on timeout.
bool fallsAsleep(pid_t thread);

// Holds up a task while another thread prepares what happens after it.
class Gate {
  public:
    // For the task: waits until the gate opens.
    void pass() {
        entered_.set_value();
        opened_.get_future().wait();
    }
    // For the other thread.
    void waitForTask() { entered_.get_future().wait(); }
    void open() { opened_.set_value(); }

  private:
    std::promise<void> entered_;
    std::promise<void> opened_;
};

// Counts events on one thread; another thread waits for them.
class Counter {
  public:
    void operator++();
    std::size_t value() const;
    // Returns false if the count is still lower after the limit.
    bool reaches(std::size_t count) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::size_t count_ = 0;
};

}  // namespace kaz::test
