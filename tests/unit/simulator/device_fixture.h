#pragma once

#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "simulator/world/neighbourhood.h"
#include "unit/simulator/bus_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace kaz::sim::test {

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

inline const Target simulatorControl{"com.kazwifi.Simulator1", "/com/kazwifi/Simulator1",
                                     "com.kazwifi.Simulator1"};

inline const AccessPoint cafe{.ssid = "Cafe"};
inline const AccessPoint home{.ssid = "Home", .security = Security::wpa2, .password = "correct horse"};

// Whether these values are among the changes.
bool includes(const json& changes, const json& expected);

// A device on a private bus, a hundred times faster than a real one, and a client.
class DeviceTest : public ::testing::Test {
  protected:
    // Starts the device; `options` without an address.
    void start(SimulatedDevice::Options options = {});
    void startInRangeOf(std::vector<AccessPoint> accessPoints);

    // With a connection to this open access point.
    void startConnected(const AccessPoint& accessPoint = cafe);

    // A property of the supplicant's interface.
    json get(const char* property) { return client_->get(supplicantInterface, property); }

    template <typename... Arguments>
    json call(const char* member, const char* types = "", Arguments... arguments) {
        return client_->call(supplicantInterface, member, types, arguments...);
    }

    // The object path of the new network.
    std::string addNetwork(const Settings& settings);
    void select(const std::string& network);

    // Waits for the signal that reports these values of the object together. Drops it and all earlier signals.
    bool changes(const json& expected, const std::string& path = supplicantInterface.path);

    // The same for the supplicant's state.
    bool reaches(const std::string& state) { return changes({{"State", state}}); }

    // Requests a scan. With another type or more arguments the supplicant may refuse it.
    void requestScan() { call("Scan", "a{sv}", 1, "Type", "s", "passive"); }

    // Scans once and returns the paths of the BSSs.
    json scan();

    // The name of the error reply to the call; empty if the call succeeds.
    template <typename... Arguments>
    std::string errorOf(const Target& target, const char* member, const char* types = "",
                        Arguments... arguments) {
        try {
            client_->call(target, member, types, arguments...);
            return {};
        } catch (const CallFailed& failed) {
            return failed.name();
        }
    }

    // How many calls of that member the device has received.
    std::size_t countCalls(const std::string& member) const;

    PrivateBus bus_;
    std::optional<SimulatedDevice> device_;
    std::optional<BusClient> client_;
};

Settings openNetwork(const std::string& ssid);
Settings pskNetwork(const std::string& ssid, const std::string& psk);
Settings saeNetwork(const std::string& ssid, const std::string& password);

Target networkAt(const std::string& path);
Target bssAt(const std::string& path);

}  // namespace kaz::sim::test
