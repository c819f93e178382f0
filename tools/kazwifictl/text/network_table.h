#pragma once

#include <wifi/types.h>

#include <optional>
#include <string>
#include <vector>

#include "kazwifictl/text/terminal.h"

namespace kaz::ctl {

// A line of the list: a network in range, or the network in use. For the network in use the library publishes
// no security, and no signal strength while it is connecting.
struct NetworkRow {
    std::string ssid;
    std::optional<int> dBm;
    std::optional<wifi::SecurityMode> security;
    bool saved = false;
    wifi::ConnectionInfo::Status status = wifi::ConnectionInfo::Status::disconnected;

    bool isCurrent() const { return status != wifi::ConnectionInfo::Status::disconnected; }
};

// The network in use first, then the others by signal strength, strongest first, then by name.
std::vector<NetworkRow> networkRows(const std::vector<wifi::WifiNetwork>& networks,
                                    const wifi::ConnectionInfo& connection);

// A heading and one line per network, or a sentence when there is no network. No line is wider than the
// terminal: the SSID column is narrowed first, then the line is cut.
std::string networkTable(const std::vector<NetworkRow>& rows, const Terminal& terminal);

}  // namespace kaz::ctl
