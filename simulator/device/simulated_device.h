#pragma once

#include "base/event_fd.h"
#include "base/non_copyable.h"
#include "simulator/device/device.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

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
    std::string addAccessPoint(const AccessPoint& point) { return run(&Device::addAccessPoint, point); }
    bool removeAccessPoint(const std::string& bssid) { return run(&Device::removeAccessPoint, bssid); }
    bool alterAccessPoint(const std::string& bssid, const std::function<void(AccessPoint&)>& alter) {
        return run(&Device::alterAccessPoint, bssid, alter);
    }
    bool setSignal(const std::string& bssid, std::int16_t dBm) { return run(&Device::setSignal, bssid, dBm); }

    // The connection: the access point disconnects the device, or goes silent.
    void deauthenticate(int reason) { run(&Device::deauthenticate, reason); }
    void dropLink() { run(&Device::dropLink); }
    void setOnlineState(const std::string& state) { run(&Device::setOnlineState, state); }

    // The services.
    void crashSupplicant() { run(&Device::crashSupplicant); }
    void restartSupplicant() { run(&Device::restartSupplicant); }
    void setAutoRestart(bool restart) { run(&Device::setAutoRestart, restart); }
    void setUnitState(const std::string& active, const std::string& sub) {
        run(&Device::setUnitState, active, sub);
    }
    void storm(unsigned signals) { run(&Device::storm, signals); }

    // The supplicant's interfaces. The radio's gets another path when it is made again. Others do nothing; the newest
    // of them is removed first.
    void removeInterface() { run(&Device::removeInterface); }
    void addInterface() { run(&Device::addInterface); }
    void removeOtherInterface() { run(&Device::removeOtherInterface); }
    void addOtherInterface() { run(&Device::addOtherInterface); }

    // Another client selects the first network of this SSID. Returns false if there is none.
    bool selectNetwork(const std::string& ssid) { return run(&Device::selectNetwork, ssid); }

    // Faults and calls.
    FaultId orderFault(const Fault& fault) { return run(&Device::orderFault, fault); }
    unsigned timesFired(FaultId fault) { return run(&Device::timesFired, fault); }
    void clearFaults() { run(&Device::clearFaults); }
    std::vector<Call> calls() const { return log_.entries(); }
    void forgetCalls() { log_.take(); }
    bool waitForCalls(const std::function<bool(const std::vector<Call>&)>& condition,
                      std::chrono::milliseconds limit) const {
        return log_.waitUntil(condition, limit);
    }

    // Observations. The supplicant's state is empty while it does not run.
    std::string supplicantState() { return run(&Device::supplicantState); }
    std::string unitState() { return run(&Device::unitState); }
    std::string onlineState() { return run(&Device::onlineState); }

  private:
    using Task = std::function<void(Device&)>;

    // Runs the operation on the device's thread, and returns its result or rethrows its exception. The thread
    // continues after an exception.
    template <typename Operation, typename... Arguments>
    std::invoke_result_t<Operation, Device&, const Arguments&...> run(Operation operation,
                                                                      const Arguments&... arguments) {
        std::packaged_task<std::invoke_result_t<Operation, Device&, const Arguments&...>(Device&)> task(
            [&](Device& device) { return std::invoke(operation, device, arguments...); });
        auto result = task.get_future();
        post([&task](Device& device) { task(device); });
        return result.get();
    }

    void main(Options options, std::promise<void>& ready);
    void post(Task task);
    void runTasks(Device& device);

    CallLog log_;
    std::mutex mutex_;
    std::deque<Task> tasks_;
    bool stopping_ = false;
    EventFd wakeUp_;
    std::thread thread_;
};

}  // namespace kaz::sim
