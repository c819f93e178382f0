#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "simulator/bus/call_log.h"
#include "simulator/bus/faults.h"
#include "simulator/world/neighbourhood.h"

namespace kaz::sim {

// A device on a bus: systemd with the supplicant's unit, networkd, the supplicant with its radio, and the
// control interface of docs/simulator.md. It runs on a thread of its own. Every operation may be called from
// any other thread and has taken effect when it returns; what follows from it happens in simulated time.
class SimulatedDevice {
  public:
    struct Options {
        std::string busAddress;
        Neighbourhood neighbourhood;       // access points without a BSSID get one
        double timeScale = 1.0;            // 0.01: everything simulated is a hundred times faster
        std::filesystem::path configFile;  // read at start if it exists, written by SaveConfig; may be empty

        // Starts and stops the wpa_supplicant daemon of this machine, with its wired driver on a network of
        // its own, instead of simulating one. Access points and whatever else belongs to the simulated radio
        // have no effect then.
        bool realSupplicant = false;
    };

    // Returns when all services are on the bus; with `unitActive` the supplicant too. Throws std::exception
    // when that cannot be.
    explicit SimulatedDevice(Options options);
    ~SimulatedDevice();
    SimulatedDevice(const SimulatedDevice&) = delete;
    SimulatedDevice& operator=(const SimulatedDevice&) = delete;
    SimulatedDevice(SimulatedDevice&&) = delete;
    SimulatedDevice& operator=(SimulatedDevice&&) = delete;

    // The air. An access point without a BSSID gets one; the result is it. False for an unknown BSSID.
    std::string addAccessPoint(const AccessPoint& accessPoint);
    bool removeAccessPoint(const std::string& bssid);
    bool alterAccessPoint(const std::string& bssid, const std::function<void(AccessPoint&)>& alter);
    bool setSignal(const std::string& bssid, std::int16_t dBm);

    // The connection: the access point sends the device away, or falls silent.
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

    // What there is to see. The supplicant's state is empty while it does not run.
    std::string supplicantState() const;
    std::string unitState() const;
    std::string onlineState() const;

  private:
    class Thread;
    std::unique_ptr<Thread> thread_;
};

}  // namespace kaz::sim
