// Reads n access points from a private bus with each reader, in turns, so that a busy machine affects all
// equally.
//
//   bss_benchmark [--short]
#include "bench/bss/bss_reader.h"
#include "bench/measuring/figures.h"
#include "bench/measuring/program.h"
#include "bench/measuring/stop_watch.h"
#include "bench/stand_in/stand_in_process.h"
#include "simulator/private_bus/private_bus.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace kaz::bench;

struct Contestant {
    std::string name;
    std::unique_ptr<BssReader> reader;
    std::vector<double> times;  // us per BSS; one for each turn
    std::vector<double> processorTimes;
};

void takeTurn(Contestant& contestant, const std::vector<std::string>& paths,
              const std::vector<BssReader::Bss>& expected) {
    contestant.reader->onItsThread([&] {
        const auto count = static_cast<double>(paths.size());
        const StopWatch watch;
        const std::vector<BssReader::Bss> read = contestant.reader->read(paths);
        contestant.times.push_back(watch.microseconds() / count);
        contestant.processorTimes.push_back(watch.processorMicroseconds() / count);
        if (!expected.empty() && read != expected) {
            throw std::runtime_error(contestant.name + " read something else");
        }
    });
}

// Turn by turn, so that a disturbance affects both.
std::vector<double> ratios(const std::vector<double>& ours, const std::vector<double>& limit) {
    std::vector<double> all(ours.size());
    std::transform(ours.begin(), ours.end(), limit.begin(), all.begin(),
                   [](double a, double b) { return a / b; });
    return all;
}

void reportSize(const std::vector<Contestant>& contestants, std::size_t size) {
    const Contestant& limit = contestants.front();
    for (const Contestant& contestant : contestants) {
        const Spread time = spreadOf(contestant.times);
        const Spread processor = spreadOf(contestant.processorTimes);
        const Spread ratio = spreadOf(ratios(contestant.times, limit.times));
        const Spread processorRatio = spreadOf(ratios(contestant.processorTimes, limit.processorTimes));
        report("bss", contestant.name,
               {{"n", static_cast<double>(size)},
                {"turns", static_cast<double>(contestant.times.size())},
                {"us", time.median},
                {"us_lower", time.lower},
                {"us_upper", time.upper},
                {"cpu_us", processor.median},
                {"cpu_us_lower", processor.lower},
                {"cpu_us_upper", processor.upper},
                {"ratio", ratio.median},
                {"ratio_lower", ratio.lower},
                {"ratio_upper", ratio.upper},
                {"cpu_ratio", processorRatio.median}});
    }
}

void runSize(std::vector<Contestant>& contestants, std::size_t size, std::size_t turns) {
    const std::vector<std::string> paths = StandInProcess::bssPaths(size);
    std::vector<BssReader::Bss> expected;
    contestants.front().reader->onItsThread([&] { expected = contestants.front().reader->read(paths); });
    for (Contestant& contestant : contestants) {
        takeTurn(contestant, paths, expected);
        contestant.times.clear();
        contestant.processorTimes.clear();
    }
    for (std::size_t turn = 0; turn < turns; ++turn) {
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            // Rotate, so that no reader always follows the same one.
            takeTurn(contestants[(i + turn) % contestants.size()], paths, expected);
        }
    }
    reportSize(contestants, size);
}

void run(bool brief) {
    spdlog::set_level(spdlog::level::warn);
    const kaz::sim::PrivateBus bus;
    bus.becomeSystemBus();
    const StandInProcess standIn(bus.address());
    std::vector<Contestant> contestants;
    const auto add = [&](const char* name, std::unique_ptr<BssReader> reader) {
        contestants.push_back({name, std::move(reader), {}, {}});
    };
    add("hand-written sd-bus", makeHandWrittenReader(bus.address()));
    add("libkazwifi", makeOurReader());
    add("sdbus-c++", makeSdbusCppReader(bus.address()));
    add("GDBus", makeGDBusReader(bus.address()));
    add("QtDBus", makeQtDBusReader(bus.address()));
    add("sd-bus, 64 in flight", makePipelinedReader(bus.address()));
    const std::size_t bssInAll = brief ? 500 : 10000;  // for each contestant and size
    for (const std::size_t size : {10U, 30U, 100U, 300U, 1000U}) {
        runSize(contestants, size, std::max<std::size_t>(bssInAll / size, brief ? 1 : 41));
    }
}

}  // namespace

int main(int argc, char** argv) {
    return kaz::bench::runProgram(argc, argv, run);
}
