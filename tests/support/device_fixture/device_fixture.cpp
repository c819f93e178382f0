#include "support/device_fixture/device_fixture.h"

#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace kaz::test {
namespace {

constexpr double timeScale = 0.01;

sim::AccessPoint accessPoint(const std::string& ssid, sim::Security security, std::int16_t signal,
                             const std::string& password = {}) {
    sim::AccessPoint point;
    point.ssid = ssid;
    point.security = security;
    point.signal = signal;
    point.password = password;
    return point;
}

}  // namespace

DeviceFixture::DeviceFixture() {
    sim::AccessPoint hidden = accessPoint("Hidden", sim::Security::wpa2, -58, "hidden away");
    hidden.hidden = true;
    sim::AccessPoint office = accessPoint("Office", sim::Security::eap, -66);
    office.accounts = {{"alice", "wonderland", "PEAP", "MSCHAPV2"}};
    neighbourhood.accessPoints = {
        accessPoint("Cafe", sim::Security::open, -70),
        accessPoint("Home", sim::Security::wpa2, -50, homePassword),
        accessPoint("Neighbour", sim::Security::wpa2Wpa3, -80, "next door"),
        accessPoint("Old", sim::Security::wep, -85, "12345"),
        accessPoint("Future", sim::Security::wpa3, -75, "tomorrow"),
        hidden,
        office,
    };
    for (sim::AccessPoint& point : neighbourhood.accessPoints) {
        point.bssid = neighbourhood.freeBssid();
    }
    bus_.becomeSystemBus();
    ::setenv("KAZ_CONFIG_FILE", (folder_ / "kaz.conf").c_str(), 1);
}

DeviceFixture::~DeviceFixture() {
    user_.reset();
    ::unsetenv("KAZ_CONFIG_FILE");
}

void DeviceFixture::startDevice() {
    device_ = std::make_unique<sim::SimulatedDevice>(
        sim::SimulatedDevice::Options{bus_.address(), neighbourhood, timeScale, folder_ / "supplicant.conf"});
}

void DeviceFixture::start() {
    startDevice();
    user_ = std::make_unique<WifiUser>();
    if (neighbourhood.unitActive) {
        ASSERT_TRUE(user_->waitForStack(true));
    }
}

void DeviceFixture::replaceUser() {
    user_.reset();
    user_ = std::make_unique<WifiUser>();
}

void DeviceFixture::restartUser() {
    replaceUser();
    ASSERT_TRUE(user_->waitForStack(true));
}

void DeviceFixture::crashBus() {
    bus_.kill();
    device_.reset();
}

void DeviceFixture::restartBus() {
    bus_.restart();
    startDevice();
}

void DeviceFixture::restartDevice() {
    device_.reset();
    startDevice();
}

std::string DeviceFixture::savedConfiguration() const {
    return readFile(folder_ / "supplicant.conf");
}

bool DeviceFixture::waitForSaved(const std::string& part) {
    return log_.waitFor(
        [&](const RecordingLog::Records&) { return savedConfiguration().find(part) != std::string::npos; });
}

std::vector<sim::Call> DeviceFixture::callsOf(const std::string& member) const {
    const auto all = device_->calls();
    std::vector<sim::Call> matching;
    std::copy_if(all.begin(), all.end(), std::back_inserter(matching),
                 [&](const sim::Call& call) { return call.peer == "supplicant" && call.member == member; });
    return matching;
}

wifi::ConnectionSettings DeviceFixture::settings(const std::string& ssid, wifi::SecurityMode mode,
                                                 const std::string& password) {
    wifi::ConnectionSettings result;
    result.ssid = ssid;
    result.securityMode = mode;
    result.password = password;
    return result;
}

}  // namespace kaz::test
