#pragma once

#include <wifi/types.h>

#include <string>
#include <variant>

#include "kazwifictl/input/options.h"
#include "kazwifictl/session/snapshot.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

// How to connect to a network, decided from what is known about it and what was asked for.
struct AlreadyConnected {};
struct LookFirst {};  // the network is not in the list, and what was asked for leaves its security open
struct UseSaved {
    bool inRange = false;
};
// The settings lack the password.
struct UseSettings {
    wifi::ConnectionSettings settings;
};
using ConnectPlan = std::variant<AlreadyConnected, LookFirst, UseSaved, UseSettings, Failure>;

// `looked`: a scan has just been made, so that LookFirst is no longer an answer.
ConnectPlan planConnect(const std::string& ssid, const ConnectOptions& options, const Snapshot& view,
                        bool looked);

}  // namespace kaz::ctl
