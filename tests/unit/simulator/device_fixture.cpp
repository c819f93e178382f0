#include "device_fixture.h"

#include <type_traits>

namespace kaz::sim::test {

AccessPoint accessPoint(const std::string& ssid, Security security, const std::string& password) {
    AccessPoint result;
    result.ssid = ssid;
    result.security = security;
    result.password = password;
    return result;
}

Target networkAt(const std::string& path) {
    return {"fi.w1.wpa_supplicant1", path, "fi.w1.wpa_supplicant1.Network"};
}

Target bssAt(const std::string& path) {
    return {"fi.w1.wpa_supplicant1", path, "fi.w1.wpa_supplicant1.BSS"};
}

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
    check(sd_bus_message_open_container(call.get(), 'a', "{sv}"), "open");
    for (const auto& [key, value] : settings) {
        if (const auto* const text = std::get_if<std::string>(&value)) {
            check(sd_bus_message_append(call.get(), "{sv}", key.c_str(), "s", text->c_str()), "append");
        } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
            check(sd_bus_message_append(call.get(), "{sv}", key.c_str(), "i",
                                        static_cast<std::int32_t>(*number)),
                  "append");
        } else if (const auto* const bytes = std::get_if<ByteSetting>(&value)) {
            check(sd_bus_message_open_container(call.get(), 'e', "sv"), "open");
            check(sd_bus_message_append(call.get(), "s", key.c_str()), "append");
            check(sd_bus_message_open_container(call.get(), 'v', "ay"), "open");
            check(sd_bus_message_append_array(call.get(), 'y', bytes->bytes.data(), bytes->bytes.size()),
                  "append");
            check(sd_bus_message_close_container(call.get()), "close");
            check(sd_bus_message_close_container(call.get()), "close");
        } else {
            check(sd_bus_message_append(call.get(), "{sv}", key.c_str(), "b", 1), "append");
        }
    }
    check(sd_bus_message_close_container(call.get()), "close");
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

}  // namespace kaz::sim::test
