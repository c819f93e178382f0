#pragma once

#include <functional>

namespace kaz::sim {

// The process behind a unit.
class ServiceProcess {
  public:
    virtual ~ServiceProcess() = default;

    // Starts it; `ready` is called once it has its name on the bus.
    virtual void start(std::function<void()> ready) = 0;

    // Asks it to end; `gone` is called once it has. Also while it is still starting.
    virtual void stop(std::function<void()> gone) = 0;

    // Ends it the hard way if it runs.
    virtual void kill() = 0;

    // Called when it ends though nobody stopped it.
    std::function<void(bool cleanly)> exited = [](bool) {};
};

}  // namespace kaz::sim
