#pragma once

#include "doubles/fake_communicator/fake_communicator.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace kaz::test {

// A fake communicator with its own loop thread. The thread runs tasks in the order they were posted, and the
// idle task when there are none. Exceptions from tasks and idle passes are ignored.
//
// Do not use the members of FakeCommunicator that run tasks.
class ThreadedCommunicator final : public FakeCommunicator {
  public:
    explicit ThreadedCommunicator(std::shared_ptr<FakeWifiStack> stack);
    ~ThreadedCommunicator() override;
    ThreadedCommunicator(const ThreadedCommunicator&) = delete;
    ThreadedCommunicator& operator=(const ThreadedCommunicator&) = delete;
    ThreadedCommunicator(ThreadedCommunicator&&) = delete;
    ThreadedCommunicator& operator=(ThreadedCommunicator&&) = delete;

    void startEventLoop() override;
    void stopEventLoop() override;
    void pushTaskAsync_(std::function<void()> task) override;

    // Runs the function on the loop thread, and waits for its end and the next idle pass.
    void onLoop(const std::function<void()>& function);

  private:
    void askToStop();
    void run();
    void runQueuedTask(std::unique_lock<std::mutex>& lock);
    std::optional<std::chrono::milliseconds> runIdlePassUnlocked(std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> queue_;
    bool stopping_ = false;
    std::size_t pushedTasks_ = 0;
    std::size_t settledTasks_ = 0;  // tasks that were followed by an idle pass
    std::thread thread_;
};

}  // namespace kaz::test
