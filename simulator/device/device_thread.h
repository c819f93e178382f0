#pragma once

#include <deque>
#include <future>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>

#include "base/event_fd.h"
#include "base/non_copyable.h"
#include "simulator/device/device.h"
#include "simulator/device/simulated_device.h"

namespace kaz::sim {

// The thread of a simulated device; runs functions on it.
class SimulatedDevice::Thread : NonCopyable {
  public:
    // Returns when the device is ready. Rethrows an exception from its construction.
    explicit Thread(Options options);
    ~Thread();

    // Runs the function on the device's thread, and returns its result or rethrows its exception. The thread
    // continues after an exception.
    template <typename Function>
    auto run(Function&& function) {
        using Result = std::invoke_result_t<Function, Device&>;
        std::packaged_task<Result(Device&)> task(std::forward<Function>(function));
        auto result = task.get_future();
        post([&task](Device& device) { task(device); });
        return result.get();
    }

    CallLog& log() noexcept { return log_; }

  private:
    using Task = std::function<void(Device&)>;

    void main(Options options, std::promise<void>& ready);
    void post(Task task);
    void runTasks(Device& device);

    CallLog log_;
    std::mutex mutex_;
    std::deque<Task> tasks_;
    bool stopping_ = false;
    EventFd wakeUp_;
    std::thread thread_;
};

}  // namespace kaz::sim
