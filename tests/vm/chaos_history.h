// Random histories of a device: bursts of actions, and what is tried after each burst.
#pragma once

#include "vm/chaos_actions.h"

#include <chrono>
#include <string>
#include <vector>

namespace kaz::vm {

// One action, with its own random numbers, so that it does the same when others are left out.
struct Step {
    const Action* action = nullptr;
    Random::result_type seed = 0;
    std::chrono::milliseconds pause{};
};

struct Burst {
    std::vector<Step> steps;
    bool connects = false;  // the witness, once the device is healed
    Random::result_type seed = 0;
};

using History = std::vector<Burst>;

std::string text(const Burst& burst);
std::string text(const History& history);

// The same without one step, and without its burst if that was the only one.
History without(History history, std::size_t burst, std::size_t step);

// Deals the actions like cards: each once before any comes again.
class Deck {
  public:
    explicit Deck(Random::result_type seed) : random_(seed) {}

    Burst burst();

    // An action that could not have an effect comes again before the cards are mixed.
    void putBack(const Action* action) { cards_.insert(cards_.begin(), action); }

  private:
    const Action* deal();

    Random random_;
    std::vector<const Action*> cards_;
};

}  // namespace kaz::vm
