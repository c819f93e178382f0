#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "bus_client.h"
#include "neighbourhood.h"
#include "private_bus.h"
#include "simulated_device.h"

namespace kaz::sim::test {

inline const Target properties{"", "", "org.freedesktop.DBus.Properties"};
inline const Target supplicantRoot{"fi.w1.wpa_supplicant1", "/fi/w1/wpa_supplicant1",
                                   "fi.w1.wpa_supplicant1"};
inline const Target supplicantInterface{"fi.w1.wpa_supplicant1", "/fi/w1/wpa_supplicant1/Interfaces/0",
                                        "fi.w1.wpa_supplicant1.Interface"};
inline const Target systemdManager{"org.freedesktop.systemd1", "/org/freedesktop/systemd1",
                                   "org.freedesktop.systemd1.Manager"};
inline const Target systemdUnit{"org.freedesktop.systemd1",
                                "/org/freedesktop/systemd1/unit/wpa_5fsupplicant_2eservice",
                                "org.freedesktop.systemd1.Unit"};
inline const Target networkdManager{"org.freedesktop.network1", "/org/freedesktop/network1",
                                    "org.freedesktop.network1.Manager"};

AccessPoint accessPoint(const std::string& ssid, Security security, const std::string& password = "");

// A device on a bus of its own, a hundred times faster than life, and a client.
class DeviceTest : public ::testing::Test {
  protected:
    // Starts the device; `options` without an address.
    void start(SimulatedDevice::Options options = {});
    void start(std::vector<AccessPoint> accessPoints);

    std::string addNetwork(const Settings& settings);
    void select(const std::string& network);
    bool reaches(const std::string& state);

    PrivateBus bus_;
    std::optional<SimulatedDevice> device_;
    std::optional<BusClient> client_;
};

Target networkAt(const std::string& path);
Target bssAt(const std::string& path);

}  // namespace kaz::sim::test
