#pragma once

#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace kaz::ctl {

using Clock = std::chrono::steady_clock;

// Everything that the Manager publishes, at one moment.
struct Snapshot {
    Clock::time_point time;
    bool enabled = true;
    bool running = false;  // the Manager is attached to a running supplicant
    bool scanning = false;
    std::vector<wifi::WifiNetwork> networks;
    wifi::ConnectionInfo connection;
    wifi::Outcome lastOutcome;  // why the last connection or attempt ended

    bool isDisconnected() const { return connection.status == wifi::ConnectionInfo::Status::disconnected; }

    // Whether the device is connected or connecting to `ssid`.
    bool isInUse(const std::string& ssid) const { return !isDisconnected() && connection.ssid == ssid; }

    // The network in the list with this name, or null.
    const wifi::WifiNetwork* find(const std::string& ssid) const {
        const auto found = std::find_if(networks.begin(), networks.end(),
                                        [&](const wifi::WifiNetwork& each) { return each.ssid == ssid; });
        return found == networks.end() ? nullptr : &*found;
    }
};

}  // namespace kaz::ctl
