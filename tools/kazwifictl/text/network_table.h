#pragma once

#include <wifi/connection_details.h>
#include <wifi/network_access.h>
#include <wifi/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "kazwifictl/text/terminal.h"

namespace kaz::ctl {

// Manager::networkAccess()
using Accesses = std::map<std::string, wifi::NetworkAccess>;

// What it takes to join the network: what is known of it, or else what the list announces.
wifi::NetworkAccess accessTo(const wifi::WifiNetwork& network, const Accesses& accesses);

// A line of the list: a network in range, or the network in use. While that is connecting, its signal strength is not
// known.
struct NetworkRow {
    std::string ssid;
    std::optional<int> dBm;
    std::optional<wifi::SecurityMode> security;  // with which it is joined; nothing if it is not in range
    bool saved = false;
    wifi::ConnectionInfo::Status status = wifi::ConnectionInfo::Status::disconnected;
    wifi::NetworkDemands demands{};
    bool inRange = true;  // otherwise only its name is known, and that it is saved

    bool isCurrent() const { return status != wifi::ConnectionInfo::Status::disconnected; }
};

// The network in use first, then the others by signal strength, strongest first, then by name.
std::vector<NetworkRow> networkRows(const std::vector<wifi::WifiNetwork>& networks,
                                    const wifi::ConnectionInfo& connection, const Accesses& accesses = {},
                                    const wifi::NetworkInUse& inUse = {});

// A heading and one line per network, or a sentence when there is no network. No line is wider than the terminal. On a
// narrow one the dBm go first, then words become short, then the signal and the security go. The names are cut last.
std::string networkTable(const std::vector<NetworkRow>& rows, const Terminal& terminal);

}  // namespace kaz::ctl
