#include "support/device_fixture/device_fixture.h"

#include "support/waiting/waiting.h"

#include <stdlib.h>

#include <algorithm>
#include <iterator>

namespace kaz::test {
namespace {

constexpr double timeScale = 0.01;

}  // namespace

DeviceFixture::DeviceFixture() {
    using sim::Security;
    neighbourhood.accessPoints = {
        {.ssid = "Cafe", .signal = -70},
        {.ssid = "Home", .signal = -50, .security = Security::wpa2, .password = homePassword},
        {.ssid = "Neighbour", .signal = -80, .security = Security::wpa2Wpa3, .password = "next door"},
        {.ssid = "Old", .signal = -85, .security = Security::wep, .password = "12345"},
        {.ssid = "Future", .signal = -75, .security = Security::wpa3, .password = "tomorrow"},
        {.ssid = "Hidden",
         .signal = -58,
         .security = Security::wpa2,
         .password = "hidden away",
         .hidden = true},
        {.ssid = "Office",
         .signal = -66,
         .security = Security::eap,
         .accounts = {{"alice", "wonderland", "PEAP", "MSCHAPV2"}}},
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
    if (neighbourhood.unitActive && neighbourhood.interface) {
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

sim::AccessPoint& DeviceFixture::accessPoint(const std::string& ssid) {
    auto& all = neighbourhood.accessPoints;
    return *std::find_if(all.begin(), all.end(), [&](const auto& point) { return point.ssid == ssid; });
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

bool DeviceFixture::waitForCall(const std::string& member) const {
    return device_->waitForCalls(
        [&](const auto& calls) {
            return std::any_of(calls.begin(), calls.end(),
                               [&](const sim::Call& call) { return call.member == member; });
        },
        timeLimit);
}

void DeviceFixture::connect(const wifi::ConnectionSettings& target) {
    ASSERT_EQ(manager().connect(target), wifi::ConnectResult::ok);
    ASSERT_TRUE(user().waitForStatus(wifi::ConnectionInfo::Status::connected, target.ssid)) << target.ssid;
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
