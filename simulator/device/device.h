#pragma once

#include "base/non_copyable.h"
#include "simulator/bus/connection.h"
#include "simulator/device/control.h"
#include "simulator/device/device_options.h"
#include "simulator/device/networkd.h"
#include "simulator/device/real_service.h"
#include "simulator/device/simulated_service.h"
#include "simulator/device/systemd.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

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
    bool setSignal(const std::string& bssid, std::int16_t dBm);

    void deauthenticate(int reason);
    void dropLink();
    void setOnlineState(const std::string& state) { networkd_->setOnlineState(state); }

    void crashSupplicant() { process_->kill(); }
    void restartSupplicant();
    void setAutoRestart(bool restart) { systemd_->unit().setAutoRestart(restart); }
    void setUnitState(const std::string& active, const std::string& sub) {
        systemd_->unit().force({active, sub});
    }
    void storm(unsigned signals);

    void removeInterface();
    void addInterface();
    void removeOtherInterface();
    void addOtherInterface();
    bool selectNetwork(const std::string& ssid);

    FaultId orderFault(const Fault& fault) { return faults_.order(fault); }
    unsigned timesFired(FaultId fault) const { return faults_.timesFired(fault); }
    void clearFaults() { faults_.clear(); }
    CallLog& log() noexcept { return environment_.log; }

    // Empty unless the simulated supplicant runs.
    std::string supplicantState();
    std::string unitState() { return systemd_->unit().states().active; }
    std::string onlineState() const { return networkd_->onlineState(); }

  private:
    void accessPointsChanged();
    void followLink();

    // Null unless the simulated supplicant runs; always null with the real one.
    Supplicant* supplicant() { return simulated_ == nullptr ? nullptr : simulated_->supplicant(); }
    // The same while the supplicant has no interface.
    InterfaceObject* interface();

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
