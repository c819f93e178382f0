// What is true of a device, as its daemons and the kernel say, what a Manager says of it, and whether it still works.
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

// Blocks until the daemons have stayed in one state for some seconds, but not for ever: a supplicant that knows only a
// network with a wrong key never gives up.
void waitUntilQuiet();

// Compares the witness, the watcher and a Manager just made with the daemons. Each may be late, but not longer than the
// signal is polled. Returns what differs, or an empty text.
std::string difference(World& world);

// Lets the witness scan. With `connects`, lets it connect to one of the neighbours, and then ends the connection, by the
// user or by the access point. Returns what went wrong, or an empty text.
std::string failureToWork(World& world, Random random, bool connects);

}  // namespace kaz::vm
