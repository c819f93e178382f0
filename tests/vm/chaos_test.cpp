// Random histories on the real stack: a user interface may be late, never wrong.
#include "vm/chaos_history.h"
#include "vm/chaos_oracle.h"
#include "vm/device.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace kaz::vm {
namespace {

// With this many bursts, each action must have had an effect.
constexpr std::size_t longRun = 30;
constexpr int trialsToShorten = 15;

// How long the emulated processor has worked since the boot: a guest takes time of its host only while it works.
std::chrono::milliseconds busy() {
    constexpr int millisecondsPerTick = 10;
    enum Column { user, nice, system, idle, waiting, interrupts, softInterrupts, columns };
    std::array<long, columns> ticks{};
    std::ifstream file("/proc/stat");
    std::string name;
    file >> name;
    for (long& value : ticks) {
        file >> value;
    }
    const long all = std::accumulate(ticks.begin(), ticks.end(), 0L);
    return std::chrono::milliseconds((all - ticks[idle] - ticks[waiting]) * millisecondsPerTick);
}

class Chaos : public DeviceTest {
  protected:
    // The number in an environment variable of guest/start.
    static unsigned setting(const char* name, unsigned otherwise) {
        const char* const value = std::getenv(name);
        return value == nullptr || *value == '\0' ? otherwise : static_cast<unsigned>(std::stoul(value));
    }

    // Plays the bursts of a seed until one ends wrong.
    void play(unsigned seed, unsigned bursts) {
        Deck deck(seed);
        History history;
        std::string wrong;
        const auto begin = Clock::now();
        const auto busyBefore = busy();
        {
            World world(device());
            while (history.size() < bursts && wrong.empty()) {
                history.push_back(deck.burst());
                wrong = play(world, history, deck);
            }
        }
        record("seconds_for_all", Clock::now() - begin);
        record("seconds_busy", busy() - busyBefore);
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

  private:
    // Plays the last burst. Returns what is wrong afterwards.
    std::string play(World& world, const History& history, Deck& deck) {
        const Burst& burst = history.back();
        std::printf("burst %zu: %s\n", history.size(), text(burst).c_str());
        std::fflush(stdout);
        for (const Action* idle : act(world, burst)) {
            deck.putBack(idle);
        }
        std::string wrong = wrongAfterwards(world, burst);
        std::printf("  ended %s\n", summary(saidBy(world.witness.manager())).c_str());
        return wrong;
    }

    // Returns the actions that had no effect.
    std::vector<const Action*> act(World& world, const Burst& burst) {
        std::vector<const Action*> idle;
        for (const Step& step : burst.steps) {
            Random random(step.seed);
            try {
                step.action->act(world, random);
                ++effects_[step.action->name];
            } catch (const std::runtime_error& error) {
                std::printf("no effect of '%s': %s\n", step.action->name.c_str(), error.what());
                idle.push_back(step.action);
            }
            std::this_thread::sleep_for(step.pause);
        }
        return idle;
    }

    static std::string wrongAfterwards(World& world, const Burst& burst) {
        heal(world);
        waitUntilQuiet();
        const std::string different = difference(world);
        return different.empty() ? failureToWork(world, Random(burst.seed), burst.connects) : different;
    }

    // On a device that was reset.
    bool endsWrong(const History& history) {
        DeviceTest::SetUp();
        World world(device());
        return std::any_of(history.begin(), history.end(), [&](const Burst& burst) {
            act(world, burst);
            return !wrongAfterwards(world, burst).empty();
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
            if (burst < history.size() && step >= history[burst].steps.size()) {
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

    std::map<std::string, int> effects_;
};

TEST_F(Chaos, KnownHistoryEndsInTheTruth) {
    play(1, 6);
}

TEST_F(Chaos, RandomHistoryEndsInTheTruth) {
    play(setting("KAZ_CHAOS_SEED", 2), setting("KAZ_CHAOS_BURSTS", 6));
}

}  // namespace
}  // namespace kaz::vm
