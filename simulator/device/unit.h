#pragma once

#include "simulator/bus/scheduler.h"
#include "simulator/device/service_process.h"
#include "simulator/world/times.h"

#include <functional>
#include <string>

namespace kaz::sim {

// A service unit of systemd: its states and their order.
class Unit {
  public:
    struct States {
        std::string active;
        std::string sub;

        bool operator==(const States&) const = default;
    };

    // The process and the times must outlive the unit. `changed` is called for every change of the states.
    Unit(const Scheduler& scheduler, const Times& times, ServiceProcess& process,
         std::function<void()> changed);

    // `done` is called when the job has ended, with false if it failed or another job replaced it.
    using Done = std::function<void(bool done)>;
    void start(Done done);
    void stop(Done done);
    void restart(Done done);
    void resetFailed();

    // Sets only the states; the process is not affected.
    void force(const States& states);

    // Whether the unit starts again after a crash.
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
