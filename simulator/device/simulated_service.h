#pragma once

#include "simulator/bus/connection.h"
#include "simulator/device/service_process.h"
#include "simulator/supplicant/supplicant.h"

#include <memory>

namespace kaz::sim {

// The simulated supplicant as a process that starts, ends and crashes.
class SimulatedService : public ServiceProcess {
  public:
    // All references must outlive this. `stateChanged` is called for each state of the supplicant, also for
    // its end.
    SimulatedService(const Environment& environment, const Neighbourhood& neighbourhood,
                     InterfaceObject::Storage& storage, std::function<void()> stateChanged);

    void start(std::function<void()> ready) override;
    void stop(std::function<void()> gone) override;
    void kill() override;

    // Runs at once, for a device that was on before the test began.
    void launch();

    // Null while the supplicant does not run.
    Supplicant* supplicant() noexcept { return supplicant_.get(); }

  private:
    void end();

    const Environment& environment_;
    const Neighbourhood& neighbourhood_;
    InterfaceObject::Storage& storage_;
    std::function<void()> stateChanged_;
    std::unique_ptr<Supplicant> supplicant_;
    Timer transition_;
};

}  // namespace kaz::sim
