#include "doubles/fake_communicator/threaded_communicator.h"

#include <exception>
#include <utility>

namespace kaz::test {
namespace {

template <typename Function>
auto guarded(const Function& function) -> decltype(function()) {
    try {
        return function();
    } catch (const std::exception& /*error*/) {
        return decltype(function())();
    }
}

}  // namespace

ThreadedCommunicator::ThreadedCommunicator(std::shared_ptr<FakeWifiStack> stack)
    : FakeCommunicator(std::move(stack)) {}

ThreadedCommunicator::~ThreadedCommunicator() {
    askToStop();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void ThreadedCommunicator::startEventLoop() {
    FakeCommunicator::startEventLoop();
    thread_ = std::thread([this] { run(); });
}

void ThreadedCommunicator::stopEventLoop() {
    askToStop();
    FakeCommunicator::stopEventLoop();
}

void ThreadedCommunicator::askToStop() {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    changed_.notify_all();
}

void ThreadedCommunicator::pushTaskAsync_(std::function<void()> task) {
    stack().record("pushTaskAsync_");
    const std::lock_guard lock(mutex_);
    ++pushedTasks_;
    queue_.push_back(std::move(task));
    changed_.notify_all();
}

void ThreadedCommunicator::onLoop(const std::function<void()>& function) {
    std::unique_lock lock(mutex_);
    const std::size_t mine = ++pushedTasks_;
    queue_.push_back(function);
    changed_.notify_all();
    changed_.wait(lock, [&] { return settledTasks_ >= mine; });
}

void ThreadedCommunicator::run() {
    std::unique_lock lock(mutex_);
    const auto isReady = [this] { return stopping_ || !queue_.empty(); };
    while (!stopping_) {
        if (!queue_.empty()) {
            runQueuedTask(lock);
            continue;
        }
        const std::size_t before = pushedTasks_;
        const auto delay = runIdlePassUnlocked(lock);
        settledTasks_ = before;
        changed_.notify_all();
        if (delay) {
            changed_.wait_for(lock, *delay, isReady);
        } else {
            changed_.wait(lock, isReady);
        }
    }
    auto dropped = std::exchange(queue_, {});
    lock.unlock();
    dropped.clear();
    guarded([this] { runLastIdlePass(); });
}

void ThreadedCommunicator::runQueuedTask(std::unique_lock<std::mutex>& lock) {
    auto task = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    guarded(task);
    task = nullptr;
    lock.lock();
}

std::optional<std::chrono::milliseconds> ThreadedCommunicator::runIdlePassUnlocked(
    std::unique_lock<std::mutex>& lock) {
    lock.unlock();
    const auto delay = guarded([this] { return runIdlePass(); });
    lock.lock();
    return delay;
}

}  // namespace kaz::test
