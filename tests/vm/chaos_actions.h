// What may happen to a device: requests of its user, of other programs, of the system, and of the neighbourhood.
#pragma once

#include "vm/chaos_world.h"

#include <functional>
#include <random>
#include <string>
#include <vector>

namespace kaz::vm {

using Random = std::mt19937;

// Throws std::runtime_error when it has no effect now, for example because the supplicant does not run.
using Act = std::function<void(World& world, Random& random)>;

struct Action {
    std::string name;
    Act act;
};

// Up to two seconds.
void pause(Random& random);

// An action that is a shell command.
Act command(const std::string& text);

std::vector<Action> actionsOfUser();
std::vector<Action> actionsOfOtherPrograms();
std::vector<Action> actionsOfSystem();
std::vector<Action> actionsOfNeighbourhood();

const std::vector<Action>& actions();  // all of them

}  // namespace kaz::vm
