// What is true of a device, as its daemons tell it to their own tools, and what a Manager says of it.
#pragma once

#include "vm/chaos_actions.h"
#include "vm/device.h"

#include <map>
#include <string>

namespace kaz::vm {

struct NetworkInRange {
    int signal = 0;  // dBm
    bool configured = false;

    bool operator==(const NetworkInRange&) const = default;
};

// Without what only the past explains: the last disconnect, and the SSID of an attempt.
struct Picture {
    bool enabled = true;
    bool attached = false;
    bool scanning = false;
    Status status = Status::disconnected;
    std::string ssid;  // once the link is up
    int signal = 0;    // dBm; once the link is up
    std::map<std::string, NetworkInRange> networks;

    bool operator==(const Picture&) const = default;
};

std::string summary(const Picture& picture);  // one line
std::string text(const Picture& picture);     // with all networks

Picture saidByDaemons();
Picture saidBy(wifi::Manager& manager);

// Undoes what prevents Wi-Fi from working: access points that are away or weak, a link that is down, a supplicant
// that does not run although Wi-Fi is on.
void heal(World& world);

// Blocks until the daemons have stayed in one state for some seconds, but not for ever: a supplicant that knows only a
// network with a wrong key never gives up.
void waitUntilQuiet();

// Compares the witness, and then a Manager just made, with the daemons. Both may be late, but not longer than the
// signal is polled. Returns what differs, or an empty text.
std::string difference(World& world);

}  // namespace kaz::vm
