#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/non_copyable.h"
#include "simulator/bus/call_log.h"
#include "simulator/bus/faults.h"
#include "simulator/device/device_options.h"

namespace kaz::sim {

// A device on a bus: systemd with the supplicant's unit, networkd, the supplicant with its radio, and the
// control interface of docs/simulator.md. It runs on its own thread. Every operation may be called from any
// other thread, and has taken effect when it returns; its consequences follow in simulated time.
class SimulatedDevice : NonCopyable {
  public:
    using Options = DeviceOptions;

    // Returns when all services are on the bus, with `unitActive` also the supplicant. Throws std::exception
    // on failure.
    explicit SimulatedDevice(Options options);
    ~SimulatedDevice();

    // The radio. Returns the BSSID of the new access point, which gets one if it has none. Returns false for
    // an unknown BSSID.
    std::string addAccessPoint(const AccessPoint& accessPoint);
    bool removeAccessPoint(const std::string& bssid);
    bool alterAccessPoint(const std::string& bssid, const std::function<void(AccessPoint&)>& alter);
    bool setSignal(const std::string& bssid, std::int16_t dBm);

    // The connection: the access point disconnects the device, or goes silent.
    void deauthenticate(int reason);
    void dropLink();
    void setOnlineState(const std::string& state);

    // The services.
    void crashSupplicant();
    void restartSupplicant();
    void setAutoRestart(bool restart);
    void setUnitState(const std::string& active, const std::string& sub);
    void storm(unsigned signals);

    // Faults and calls.
    FaultId orderFault(const Fault& fault);
    unsigned timesFired(FaultId fault) const;
    void clearFaults();
    std::vector<Call> calls() const;
    void forgetCalls();
    bool waitForCalls(const std::function<bool(const std::vector<Call>&)>& condition,
                      std::chrono::milliseconds limit) const;

    // Observations. The supplicant's state is empty while it does not run.
    std::string supplicantState() const;
    std::string unitState() const;
    std::string onlineState() const;

  private:
    class Thread;
    std::unique_ptr<Thread> thread_;
};

}  // namespace kaz::sim
