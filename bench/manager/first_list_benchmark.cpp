// From nothing to the first published list: a Manager, and the same calls made by hand in a loop, in turns.
//
//   first_list_benchmark [--short]
#include "calls_by_hand.h"
#include "figures.h"
#include "private_bus.h"
#include "program.h"
#include "published_list.h"
#include "stand_in_process.h"
#include "stop_watch.h"

#include <spdlog/spdlog.h>
#include <wifi/manager.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <vector>

namespace {

using namespace kaz;

struct Sample {
    double time = 0;  // us
    double processor = 0;
};

Sample read(const bench::StopWatch& watch) {
    return {watch.microseconds(), watch.processorMicroseconds()};
}

struct Samples {
    std::vector<double> times;
    std::vector<double> processor;

    void add(const Sample& sample) {
        times.push_back(sample.time);
        processor.push_back(sample.processor);
    }
};

Sample timeOfManager(std::size_t count, std::vector<double>& ends) {
    auto manager = std::optional<wifi::Manager>();
    const bench::StopWatch watch;
    manager.emplace();
    bench::awaitList(*manager);
    const Sample sample = read(watch);
    if (manager->networks().size() != count) {
        throw std::runtime_error("the list is not whole");
    }
    const bench::StopWatch end;
    manager.reset();
    ends.push_back(end.microseconds());
    return sample;
}

Sample timeByHand(const std::string& address, std::size_t count) {
    const bench::StopWatch watch;
    if (bench::listNetworksByHand(address) != count) {
        throw std::runtime_error("the list by hand is not whole");
    }
    return read(watch);
}

void reportOne(const char* who, std::size_t count, const Samples& samples, const Samples& ratios) {
    const bench::Spread time = bench::spreadOf(samples.times);
    const bench::Spread ratio = bench::spreadOf(ratios.times);
    bench::report("first list", who,
                  {{"n", static_cast<double>(count)},
                   {"turns", static_cast<double>(samples.times.size())},
                   {"us", time.median},
                   {"us_lower", time.lower},
                   {"us_upper", time.upper},
                   {"cpu_us", bench::spreadOf(samples.processor).median},
                   {"ratio", ratio.median},
                   {"ratio_lower", ratio.lower},
                   {"ratio_upper", ratio.upper},
                   {"cpu_ratio", bench::spreadOf(ratios.processor).median}});
}

void runSize(const std::string& address, std::size_t count, std::size_t turns) {
    Samples ours;
    Samples byHand;
    Samples ratios;
    std::vector<double> ends;  // of destroying the Manager
    for (std::size_t turn = 0; turn < turns; ++turn) {
        Sample one;
        Sample other;
        if (turn % 2 == 0) {
            one = timeOfManager(count, ends);
            other = timeByHand(address, count);
        } else {
            other = timeByHand(address, count);
            one = timeOfManager(count, ends);
        }
        ours.add(one);
        byHand.add(other);
        ratios.add({one.time / other.time, one.processor / other.processor});
    }
    reportOne("hand-written sd-bus", count, byHand, {{1}, {1}});
    reportOne("libkazwifi", count, ours, ratios);
    const bench::Spread end = bench::spreadOf(ends);
    bench::report("end", "libkazwifi, idle",
                  {{"n", static_cast<double>(count)}, {"us", end.median}, {"us_upper", end.upper}});
}

void run(bool brief) {
    spdlog::set_level(spdlog::level::warn);
    const sim::PrivateBus bus;
    bus.becomeSystemBus();
    bench::StandInProcess standIn(bus.address());
    for (const unsigned count : {10U, 100U, 1000U}) {
        standIn.setBssCount(count);
        runSize(bus.address(), count, brief ? 1 : count == 1000 ? 41 : 201);
    }
}

}  // namespace

int main(int argc, char** argv) {
    return kaz::bench::runProgram(argc, argv, run);
}
