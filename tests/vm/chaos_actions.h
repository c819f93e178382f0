// What may happen to a device: requests of its user, of another program, of the system, and of the neighbourhood.
#pragma once

#include "vm/access_point.h"
#include "vm/neighbourhood.h"

#include <wifi/manager.h>

#include <array>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace kaz::vm {

struct Neighbour {
    wifi::ConnectionSettings settings;
    int power;  // dBm
    AccessPoint accessPoint;
};

// What the actions act on. The witness is a Manager that lives through all of them, as that of a user interface.
struct World {
    explicit World(wifi::Manager& manager) : witness(manager) {}

    wifi::Manager& witness;
    std::array<Neighbour, 4> neighbours{{{openNetwork, 20, AccessPoint("open")},
                                         {wpa2Network, 17, AccessPoint("wpa2")},
                                         {mixedNetwork, 16, AccessPoint("mixed")},
                                         {saeNetwork, 15, AccessPoint("sae")}}};
};

using Random = std::mt19937;

struct Action {
    std::string name;
    // Throws std::runtime_error when it has no effect now, for example because the supplicant does not run.
    std::function<void(World& world, Random& random)> act;
};

const std::vector<Action>& actions();

}  // namespace kaz::vm
