#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/non_copyable.h"
#include "simulator/bus/connection.h"
#include "simulator/device/control.h"
#include "simulator/device/device_options.h"
#include "simulator/device/networkd.h"
#include "simulator/device/real_service.h"
#include "simulator/device/simulated_service.h"
#include "simulator/device/systemd.h"

namespace kaz::sim {

// All services of a device on one event loop, and the operations on them.
class Device : NonCopyable {
  public:
    // The event and the log must outlive the device.
    Device(sd_event* event, DeviceOptions options, CallLog& log);
    ~Device();

    // Returns false while the unit should be active but is not.
    bool ready() const noexcept { return ready_; }

    std::string addAccessPoint(AccessPoint accessPoint);
    bool removeAccessPoint(const std::string& bssid);
    bool alterAccessPoint(const std::string& bssid, const std::function<void(AccessPoint&)>& alter);

    void deauthenticate(int reason);
    void dropLink();
    void storm(unsigned signals);
    void crashSupplicant() { process_->kill(); }
    void restartSupplicant();

    // Empty unless the simulated supplicant runs.
    std::string supplicantState();

    Faults& faults() noexcept { return faults_; }
    CallLog& log() noexcept { return environment_.log; }
    Unit& unit() noexcept { return systemd_->unit(); }
    Networkd& networkd() noexcept { return *networkd_; }

  private:
    void accessPointsChanged();
    void followLink();

    // Null unless the simulated supplicant runs; always null with the real one.
    Supplicant* supplicant() { return simulated_ == nullptr ? nullptr : simulated_->supplicant(); }

    Neighbourhood neighbourhood_;
    Faults faults_;
    Environment environment_;
    InterfaceObject::Storage storage_;
    bool ready_ = true;
    std::unique_ptr<Networkd> networkd_;
    SimulatedService* simulated_ = nullptr;
    std::unique_ptr<ServiceProcess> process_;
    std::unique_ptr<Systemd> systemd_;
    std::unique_ptr<Control> control_;
};

}  // namespace kaz::sim
