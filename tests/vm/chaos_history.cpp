#include "vm/chaos_history.h"

#include <algorithm>

namespace kaz::vm {

std::string text(const Burst& burst) {
    std::string result;
    for (const Step& step : burst.steps) {
        result += step.action->name + " (" + std::to_string(step.seed) + "), then " +
                  std::to_string(step.pause.count()) + " ms; ";
    }
    return result + (burst.connects ? "connect (" + std::to_string(burst.seed) + ')' : "scan");
}

std::string text(const History& history) {
    std::string result;
    for (const Burst& burst : history) {
        result += "  " + text(burst) + '\n';
    }
    return result;
}

History without(History history, std::size_t burst, std::size_t step) {
    std::vector<Step>& steps = history[burst].steps;
    steps.erase(steps.begin() + static_cast<std::ptrdiff_t>(step));
    if (steps.empty()) {
        history.erase(history.begin() + static_cast<std::ptrdiff_t>(burst));
    }
    return history;
}

Burst Deck::burst() {
    Burst result;
    result.steps.resize(1 + random_() % 4);
    for (Step& step : result.steps) {
        step = {deal(), random_(), std::chrono::milliseconds(random_() % 2000)};
    }
    result.connects = random_() % 3 == 0;
    result.seed = random_();
    return result;
}

const Action* Deck::deal() {
    if (cards_.empty()) {
        for (const Action& action : actions()) {
            cards_.push_back(&action);
        }
        std::shuffle(cards_.begin(), cards_.end(), random_);
    }
    const Action* const card = cards_.back();
    cards_.pop_back();
    return card;
}

}  // namespace kaz::vm
