#pragma once

#include <functional>
#include <string>

#include "simulator/bus/scheduler.h"
#include "simulator/device/service_process.h"
#include "simulator/world/times.h"

namespace kaz::sim {

// A service unit as systemd keeps it: its states and their order.
class Unit {
  public:
    struct States {
        std::string active;
        std::string sub;

        bool operator==(const States&) const = default;
    };

    // The process and the times outlive the unit. `changed` follows every change of the states.
    Unit(const Scheduler& scheduler, const Times& times, ServiceProcess& process,
         std::function<void()> changed);

    // `done` is called when the job is finished; with false when another one took its place or it failed.
    using Done = std::function<void(bool done)>;
    void start(Done done);
    void stop(Done done);
    void restart(Done done);
    void resetFailed();

    // The states alone; the process does not notice.
    void force(const States& states);

    // Whether a crash is followed by another start.
    void setAutoRestart(bool restart) noexcept { autoRestart_ = restart; }

    const States& states() const noexcept { return states_; }

  private:
    void launch();
    void exited(bool cleanly);
    void set(const States& states);
    void finish(bool done);

    const Scheduler& scheduler_;
    const Times& times_;
    ServiceProcess& process_;
    std::function<void()> changed_;
    States states_{"inactive", "dead"};
    Done done_;
    bool autoRestart_ = false;
    Timer restart_;
};

}  // namespace kaz::sim
