// What random actions act on, and how it is healed afterwards.
#pragma once

#include "vm/access_point.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"

#include <array>
#include <set>
#include <string>

namespace kaz::vm {

struct Neighbour {
    wifi::ConnectionSettings settings;
    AccessPoint accessPoint;
};

struct World {
    explicit World(Device& device) : witness(device) {}

    Device& witness;  // its Manager lives through all actions and makes requests, as that of a user interface
    Device watcher;   // its Manager lives as long and makes none, as that of a status bar
    std::array<Neighbour, 6> neighbours{{{openNetwork, AccessPoint("open")},
                                         {wpa2Network, AccessPoint("wpa2")},
                                         {mixedNetwork, AccessPoint("mixed")},
                                         {saeNetwork, AccessPoint("sae")},
                                         {twinNetwork, AccessPoint("twin1")},
                                         {twinNetwork, AccessPoint("twin2")}}};
    std::set<std::string> remedies;  // commands that undo what actions have left behind
};

// Undoes what prevents Wi-Fi from working: access points that are away or changed, a link that is down, what has a
// remedy, a supplicant that does not run, and Wi-Fi that is switched off.
void heal(World& world);

}  // namespace kaz::vm
