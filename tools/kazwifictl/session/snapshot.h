#pragma once

#include <wifi/client/follower.h>
#include <wifi/types.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "kazwifictl/text/network_table.h"

namespace kaz::ctl {

using Clock = std::chrono::steady_clock;

// Everything that the Manager publishes, at one moment, and what commands ask of it.
struct Snapshot : wifi::client::Snapshot {
    Snapshot() = default;
    explicit Snapshot(wifi::client::Snapshot now) : wifi::client::Snapshot(std::move(now)) {}

    bool isDisconnected() const {
        return connection.info.status == wifi::ConnectionInfo::Status::disconnected;
    }

    // Whether the device is connected or connecting to `ssid`.
    bool isInUse(const std::string& ssid) const { return !isDisconnected() && connection.info.ssid == ssid; }

    // The names of all networks that are known here.
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const wifi::WifiNetwork& each : networks) {
            all.push_back(each.ssid);
        }
        if (!isDisconnected() && find(connection.info.ssid) == nullptr) {
            all.push_back(connection.info.ssid);
        }
        return all;
    }

    // The network in the list with this name, or null.
    const wifi::WifiNetwork* find(const std::string& ssid) const {
        const auto found = std::find_if(networks.begin(), networks.end(),
                                        [&](const wifi::WifiNetwork& each) { return each.ssid == ssid; });
        return found == networks.end() ? nullptr : &*found;
    }

    // What it takes to join that network of the list.
    wifi::NetworkAccess accessTo(const wifi::WifiNetwork& network) const {
        return kaz::ctl::accessTo(network, access);
    }
};

}  // namespace kaz::ctl
