#include "unit/simulator/device_fixture.h"

#include <algorithm>
#include <cstdint>

namespace kaz::sim::test {

AccessPoint accessPoint(const std::string& ssid, Security security, const std::string& password) {
    AccessPoint result;
    result.ssid = ssid;
    result.security = security;
    result.password = password;
    return result;
}

Settings openNetwork(const std::string& ssid) {
    return {{"ssid", ssid}, {"key_mgmt", "NONE"}, {"auth_alg", "OPEN"}};
}

Settings pskNetwork(const std::string& ssid, const std::string& psk) {
    return {{"ssid", ssid}, {"key_mgmt", "WPA-PSK"}, {"psk", psk}, {"ieee80211w", std::int64_t{1}}};
}

Settings saeNetwork(const std::string& ssid, const std::string& password) {
    return {{"ssid", ssid}, {"key_mgmt", "SAE"}, {"sae_password", password}, {"ieee80211w", std::int64_t{2}}};
}

Target networkAt(const std::string& path) {
    return {"fi.w1.wpa_supplicant1", path, "fi.w1.wpa_supplicant1.Network"};
}

Target bssAt(const std::string& path) {
    return {"fi.w1.wpa_supplicant1", path, "fi.w1.wpa_supplicant1.BSS"};
}

namespace {

void appendBytes(sd_bus_message* call, const std::string& key, const std::string& bytes) {
    checked(sd_bus_message_open_container(call, 'e', "sv"), "open");
    checked(sd_bus_message_append(call, "s", key.c_str()), "append");
    checked(sd_bus_message_open_container(call, 'v', "ay"), "open");
    checked(sd_bus_message_append_array(call, 'y', bytes.data(), bytes.size()), "append");
    checked(sd_bus_message_close_container(call), "close");
    checked(sd_bus_message_close_container(call), "close");
}

void appendSetting(sd_bus_message* call, const std::string& key, const Setting& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        checked(sd_bus_message_append(call, "{sv}", key.c_str(), "s", text->c_str()), "append");
    } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        checked(sd_bus_message_append(call, "{sv}", key.c_str(), "i", static_cast<std::int32_t>(*number)),
                "append");
    } else if (const auto* const bytes = std::get_if<ByteSetting>(&value)) {
        appendBytes(call, key, bytes->bytes);
    } else {
        checked(sd_bus_message_append(call, "{sv}", key.c_str(), "b", 1), "append");
    }
}

}  // namespace

void DeviceTest::start(SimulatedDevice::Options options) {
    constexpr double fast = 0.01;
    options.busAddress = bus_.address();
    options.timeScale = fast;
    for (AccessPoint& ap : options.neighbourhood.accessPoints) {
        if (ap.bssid.empty()) {
            ap.bssid = options.neighbourhood.freeBssid();
        }
    }
    client_.emplace(bus_.address());
    device_.emplace(std::move(options));
}

void DeviceTest::start(std::vector<AccessPoint> accessPoints) {
    SimulatedDevice::Options options;
    options.neighbourhood.accessPoints = std::move(accessPoints);
    start(std::move(options));
}

std::string DeviceTest::addNetwork(const Settings& settings) {
    const Message call = client_->newCall(supplicantInterface, "AddNetwork");
    checked(sd_bus_message_open_container(call.get(), 'a', "{sv}"), "open");
    for (const auto& [key, value] : settings) {
        appendSetting(call.get(), key, value);
    }
    checked(sd_bus_message_close_container(call.get()), "close");
    return client_->send(call.get()).at(0);
}

void DeviceTest::select(const std::string& network) {
    client_->call(supplicantInterface, "SelectNetwork", "o", network.c_str());
}

bool DeviceTest::reaches(const std::string& state) {
    return client_->waitForSignal("PropertiesChanged", [&](const Signal& signal) {
        return signal.interface == "org.freedesktop.DBus.Properties" &&
               signal.path == supplicantInterface.path && signal.arguments.at(1).value("State", "") == state;
    });
}

nlohmann::json DeviceTest::scan() {
    client_->call(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "passive");
    EXPECT_TRUE(client_->waitForSignal("ScanDone", [](const Signal&) { return true; }));
    return client_->get(supplicantInterface, "BSSs");
}

std::size_t DeviceTest::countCalls(const std::string& member) const {
    const auto calls = device_->calls();
    return static_cast<std::size_t>(
        std::count_if(calls.begin(), calls.end(), [&](const Call& call) { return call.member == member; }));
}

}  // namespace kaz::sim::test
