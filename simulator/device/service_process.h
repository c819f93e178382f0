#pragma once

#include <functional>

namespace kaz::sim {

// The process of a unit.
class ServiceProcess {
  public:
    virtual ~ServiceProcess() = default;

    // Starts it. `ready` is called when it has its bus name.
    virtual void start(std::function<void()> ready) = 0;

    // Requests its end, also while it is starting. `gone` is called when it has ended.
    virtual void stop(std::function<void()> gone) = 0;

    // Kills it if it runs.
    virtual void kill() = 0;

    // Called when it ends without a stop.
    std::function<void(bool cleanly)> exited = [](bool) {};
};

}  // namespace kaz::sim
