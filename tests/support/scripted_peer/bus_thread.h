#pragma once

#include "base/event_fd.h"
#include "base/non_copyable.h"
#include "base/sd_bus/handles.h"

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kaz::test {

// A bus connection and its thread. Throws std::system_error when it cannot connect.
class BusThread : NonCopyable {
  public:
    using Job = std::function<void(sd_bus*)>;
    // Runs on the thread for every received message.
    using Receiver = std::function<void(sd_bus_message*)>;

    // `prepare` runs on the caller's thread after the connect and before the thread starts.
    BusThread(const std::string& address, const Job& prepare, Receiver receiver);
    ~BusThread();

    // Runs the job on the thread, and waits until it has ended and its messages were sent.
    void run(const Job& job);

  private:
    void serve();
    void processMessages();
    void runJobs();
    void sleep() const;

    dbus::BusPtr bus_;
    Receiver receiver_;
    EventFd wakeUp_;
    std::mutex mutex_;
    std::vector<std::function<void()>> jobs_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace kaz::test
