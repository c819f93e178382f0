#pragma once

#include <wifi/certificates.h>
#include <wifi/types.h>

#include <string>
#include <variant>

#include "kazwifictl/input/options.h"
#include "kazwifictl/session/snapshot.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

// How to connect to a network. Depends on the options, and on what is known about the network.
struct AlreadyConnected {};
struct AlreadyConnecting {};  // what is under way is only waited for: another request could end it
struct LookFirst {};          // the network is not in the list, and the options do not name its security
struct UseSaved {
    bool inRange = false;
};
// The password is still missing: that of the private key if there is one.
struct UseSettings {
    wifi::ConnectionSettings settings;
    wifi::Certificates certificates;
    bool replaces = false;  // settings that are saved
};
using ConnectPlan =
    std::variant<AlreadyConnected, AlreadyConnecting, LookFirst, UseSaved, UseSettings, Failure>;

// An identity that is missing is a Failure unless `asks`: then the user is asked for it.
//
// `looked`: a scan has just been made. Then the result is never LookFirst.
ConnectPlan planConnect(const std::string& ssid, const ConnectOptions& options, const Snapshot& view,
                        bool looked, bool asks = false);

}  // namespace kaz::ctl
