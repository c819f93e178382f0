#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "connection.h"
#include "networkd.h"
#include "simulated_service.h"
#include "systemd.h"

namespace kaz::sim {

// All services of a device, on one event loop.
class Device {
  public:
    Device(sd_event* event, const std::string& busAddress, Neighbourhood neighbourhood, double timeScale,
           const std::filesystem::path& configFile, CallLog& log);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    Device(Device&&) = delete;
    Device& operator=(Device&&) = delete;

    Neighbourhood& neighbourhood() noexcept { return neighbourhood_; }
    Faults& faults() noexcept { return faults_; }
    CallLog& log() noexcept { return environment_.log; }
    Unit& unit() noexcept { return systemd_->unit(); }
    Networkd& networkd() noexcept { return *networkd_; }
    ServiceProcess& process() noexcept { return service_; }

    // Null while it does not run.
    Supplicant* supplicant() noexcept { return service_.supplicant(); }

    // To be called after a change of the neighbourhood.
    void accessPointsChanged();

  private:
    void followLink();

    Neighbourhood neighbourhood_;
    Faults faults_;
    Environment environment_;
    InterfaceObject::Storage storage_;
    std::unique_ptr<Networkd> networkd_;
    SimulatedService service_;
    std::unique_ptr<Systemd> systemd_;
};

}  // namespace kaz::sim
