#include "simulator/device/simulated_device.h"

#include <cstdint>
#include <utility>

#include "simulator/device/device.h"
#include "simulator/device/device_thread.h"

namespace kaz::sim {

SimulatedDevice::SimulatedDevice(Options options) : thread_(std::make_unique<Thread>(std::move(options))) {}

SimulatedDevice::~SimulatedDevice() = default;

std::string SimulatedDevice::addAccessPoint(const AccessPoint& accessPoint) {
    return thread_->run([&](Device& device) { return device.addAccessPoint(accessPoint); });
}

bool SimulatedDevice::removeAccessPoint(const std::string& bssid) {
    return thread_->run([&](Device& device) { return device.removeAccessPoint(bssid); });
}

bool SimulatedDevice::alterAccessPoint(const std::string& bssid,
                                       const std::function<void(AccessPoint&)>& alter) {
    return thread_->run([&](Device& device) { return device.alterAccessPoint(bssid, alter); });
}

bool SimulatedDevice::setSignal(const std::string& bssid, std::int16_t dBm) {
    return alterAccessPoint(bssid, [dBm](AccessPoint& accessPoint) { accessPoint.signal = dBm; });
}

void SimulatedDevice::deauthenticate(int reason) {
    thread_->run([reason](Device& device) { device.deauthenticate(reason); });
}

void SimulatedDevice::dropLink() {
    thread_->run([](Device& device) { device.dropLink(); });
}

void SimulatedDevice::setOnlineState(const std::string& state) {
    thread_->run([&](Device& device) { device.networkd().setOnlineState(state); });
}

void SimulatedDevice::crashSupplicant() {
    thread_->run([](Device& device) { device.crashSupplicant(); });
}

void SimulatedDevice::restartSupplicant() {
    thread_->run([](Device& device) { device.restartSupplicant(); });
}

void SimulatedDevice::setAutoRestart(bool restart) {
    thread_->run([restart](Device& device) { device.unit().setAutoRestart(restart); });
}

void SimulatedDevice::setUnitState(const std::string& active, const std::string& sub) {
    thread_->run([&](Device& device) { device.unit().force({active, sub}); });
}

void SimulatedDevice::storm(unsigned signals) {
    thread_->run([signals](Device& device) { device.storm(signals); });
}

FaultId SimulatedDevice::orderFault(const Fault& fault) {
    return thread_->run([&](Device& device) { return device.faults().order(fault); });
}

unsigned SimulatedDevice::timesFired(FaultId fault) const {
    return thread_->run([fault](Device& device) { return device.faults().timesFired(fault); });
}

void SimulatedDevice::clearFaults() {
    thread_->run([](Device& device) { device.faults().clear(); });
}

std::vector<Call> SimulatedDevice::calls() const {
    return thread_->log().calls();
}

void SimulatedDevice::forgetCalls() {
    thread_->log().forget();
}

bool SimulatedDevice::waitForCalls(const std::function<bool(const std::vector<Call>&)>& condition,
                                   std::chrono::milliseconds limit) const {
    return thread_->log().waitUntil(condition, limit);
}

std::string SimulatedDevice::supplicantState() const {
    return thread_->run([](Device& device) { return device.supplicantState(); });
}

std::string SimulatedDevice::unitState() const {
    return thread_->run([](Device& device) { return device.unit().states().active; });
}

std::string SimulatedDevice::onlineState() const {
    return thread_->run([](Device& device) { return device.networkd().onlineState(); });
}

}  // namespace kaz::sim
