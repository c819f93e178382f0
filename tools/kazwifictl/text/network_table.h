#pragma once

#include <wifi/types.h>

#include <optional>
#include <string>
#include <vector>

#include "kazwifictl/text/terminal.h"

namespace kaz::ctl {

// One line of the list: a network in range, or the one in use, of which the library tells neither security
// nor, while connecting, the strength.
struct NetworkRow {
    std::string ssid;
    std::optional<int> dBm;
    std::optional<wifi::SecurityMode> security;
    bool saved = false;
    wifi::ConnectionInfo::Status status = wifi::ConnectionInfo::Status::disconnected;

    bool isCurrent() const { return status != wifi::ConnectionInfo::Status::disconnected; }
};

// The network in use first, then the others, strongest first; equally strong ones by name.
std::vector<NetworkRow> networkRows(const std::vector<wifi::WifiNetwork>& networks,
                                    const wifi::ConnectionInfo& connection);

// A heading and a line a network, or a sentence when there is none. No line is wider than the terminal: the
// SSIDs give way first.
std::string networkTable(const std::vector<NetworkRow>& rows, const Terminal& terminal);

}  // namespace kaz::ctl
