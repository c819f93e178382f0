#pragma once

#include <wifi/types.h>

#include <chrono>
#include <variant>
#include <vector>

namespace kaz::ctl {

using Clock = std::chrono::steady_clock;

struct PowerChange {
    bool enabled = false;
    bool running = false;
};

struct ScanningChange {
    bool scanning = false;
};

struct NetworksChange {
    std::vector<wifi::WifiNetwork> networks;
};

struct ConnectionChange {
    wifi::ConnectionInfo info;
};

// A change of the device with the state that it led to, as it was when the change was announced.
struct Event {
    Clock::time_point time;
    std::variant<PowerChange, ScanningChange, NetworksChange, ConnectionChange> change;
};

// Everything known about the device, in one record.
struct View {
    bool enabled = true;
    bool running = false;
    bool scanning = false;
    std::vector<wifi::WifiNetwork> networks;
    wifi::ConnectionInfo connection;

    void apply(const Event& event);
};

}  // namespace kaz::ctl
