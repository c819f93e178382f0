// Random histories on the real stack: a user interface may be late, never wrong.
#include "vm/chaos_actions.h"
#include "vm/chaos_oracle.h"
#include "vm/device.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kaz::vm {
namespace {

// With this many bursts, each action must have had an effect.
constexpr std::size_t longRun = 20;
constexpr int trialsToShorten = 15;

// One action, with its own random numbers, so that it does the same when others are left out.
struct Step {
    const Action* action = nullptr;
    Random::result_type seed = 0;
    std::chrono::milliseconds pause{};
};

using Burst = std::vector<Step>;
using History = std::vector<Burst>;

std::string text(const Burst& burst) {
    std::string result;
    for (const Step& step : burst) {
        result += (result.empty() ? "" : "; ") + step.action->name + " (" + std::to_string(step.seed) +
                  "), then " + std::to_string(step.pause.count()) + " ms";
    }
    return result;
}

std::string text(const History& history) {
    std::string result;
    for (const Burst& burst : history) {
        result += "  " + text(burst) + '\n';
    }
    return result;
}

// Deals the actions like cards: each once before any comes again.
class Deck {
  public:
    explicit Deck(Random::result_type seed) : random_(seed) {}

    Burst burst() {
        Burst result(1 + random_() % 4);
        for (Step& step : result) {
            step = {deal(), random_(), std::chrono::milliseconds(random_() % 2000)};
        }
        return result;
    }

    // An action that could not have an effect comes again before the cards are mixed.
    void putBack(const Action* action) { cards_.insert(cards_.begin(), action); }

  private:
    const Action* deal() {
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

    Random random_;
    std::vector<const Action*> cards_;
};

class Chaos : public DeviceTest {
  protected:
    // The number in an environment variable of guest/start.
    static unsigned setting(const char* name, unsigned otherwise) {
        const char* const value = std::getenv(name);
        return value == nullptr || *value == '\0' ? otherwise : static_cast<unsigned>(std::stoul(value));
    }

    // Returns the actions that had no effect.
    std::vector<const Action*> play(World& world, const Burst& burst) {
        std::vector<const Action*> idle;
        for (const Step& step : burst) {
            Random random(step.seed);
            try {
                step.action->act(world, random);
                ++effects_[step.action->name];
            } catch (const std::runtime_error& error) {
                std::printf("no effect: %s\n", error.what());
                idle.push_back(step.action);
            }
            std::this_thread::sleep_for(step.pause);
        }
        return idle;
    }

    static std::string differenceAfterwards(World& world) {
        heal(world);
        waitUntilQuiet();
        return difference(world);
    }

    // On a device that was reset.
    bool endsWrong(const History& history) {
        DeviceTest::SetUp();
        World world(manager());
        return std::any_of(history.begin(), history.end(), [&](const Burst& burst) {
            play(world, burst);
            return !differenceAfterwards(world).empty();
        });
    }

    // The shortest history that still ends wrong, as far as a few trials find it.
    History shortened(History history) {
        int trials = trialsToShorten;
        for (std::size_t last = 1; last < history.size() && trials-- > 0; last *= 2) {
            const History end(history.end() - static_cast<std::ptrdiff_t>(last), history.end());
            if (endsWrong(end)) {
                history = end;
                break;
            }
        }
        for (std::size_t burst = 0, step = 0; burst < history.size() && trials-- > 0;) {
            const History shorter = without(history, burst, step);
            if (!shorter.empty() && endsWrong(shorter)) {
                history = shorter;
            } else {
                ++step;
            }
            if (burst < history.size() && step >= history[burst].size()) {
                ++burst;
                step = 0;
            }
        }
        return history;
    }

    // Prints how often each action had an effect, and returns the names of those that never had.
    std::string printEffects() const {
        std::string never;
        for (const Action& action : actions()) {
            const auto found = effects_.find(action.name);
            const int count = found == effects_.end() ? 0 : found->second;
            std::printf("%4d  %s\n", count, action.name.c_str());
            never += count == 0 ? "\n  " + action.name : "";
        }
        return never;
    }

  private:
    static History without(History history, std::size_t burst, std::size_t step) {
        Burst& shorter = history[burst];
        shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(step));
        if (shorter.empty()) {
            history.erase(history.begin() + static_cast<std::ptrdiff_t>(burst));
        }
        return history;
    }

    std::map<std::string, int> effects_;
};

TEST_F(Chaos, RandomHistoriesEndInTheTruth) {
    const unsigned seed = setting("KAZ_CHAOS_SEED", 1);
    const unsigned bursts = setting("KAZ_CHAOS_BURSTS", 4);
    Deck deck(seed);
    History history;
    std::string wrong;
    {
        World world(manager());
        while (history.size() < bursts && wrong.empty()) {
            history.push_back(deck.burst());
            std::printf("burst %zu: %s\n", history.size(), text(history.back()).c_str());
            std::fflush(stdout);
            for (const Action* idle : play(world, history.back())) {
                deck.putBack(idle);
            }
            wrong = differenceAfterwards(world);
            std::printf("  ended %s\n", summary(saidBy(world.witness)).c_str());
        }
    }
    const std::string never = printEffects();
    if (!wrong.empty()) {
        std::printf("wrong after burst %zu of seed %u\n%s", history.size(), seed, wrong.c_str());
        std::fflush(stdout);
        FAIL() << wrong << "seed " << seed << ", all actions:\n"
               << text(history) << "the shortest history that ends wrong:\n"
               << text(shortened(history));
    }
    if (bursts >= longRun) {
        EXPECT_EQ(never, "") << "never had an effect";
    }
}

}  // namespace
}  // namespace kaz::vm
