#pragma once

#include <wifi/types.h>

#include <chrono>
#include <vector>

namespace kaz::ctl {

using Clock = std::chrono::steady_clock;

// Everything that the Manager publishes, at one moment.
struct Snapshot {
    Clock::time_point time;
    bool enabled = true;
    bool running = false;  // the supplicant is being followed
    bool scanning = false;
    std::vector<wifi::WifiNetwork> networks;
    wifi::ConnectionInfo connection;
};

}  // namespace kaz::ctl
