// The time until the first published list: a Manager, and the same calls by hand in a loop, on the caller's
// thread and on a separate one, in turns.
//
//   first_list_benchmark [--short]
#include "bench/manager/calls_by_hand.h"
#include "bench/manager/published_list.h"
#include "bench/measuring/figures.h"
#include "bench/measuring/program.h"
#include "bench/measuring/stop_watch.h"
#include "bench/stand_in/stand_in_process.h"
#include "simulator/private_bus/private_bus.h"

#include <spdlog/spdlog.h>
#include <wifi/manager.h>

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace kaz;

struct Sample {
    double time = 0;  // us
    double processor = 0;
};

Sample operator/(const Sample& one, const Sample& other) {
    return {one.time / other.time, one.processor / other.processor};
}

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

// Like a Manager: the caller does not wait.
Sample timeByHandOnAThread(const std::string& address, std::size_t count) {
    std::size_t listed = 0;
    const bench::StopWatch watch;
    std::thread([&] { listed = bench::listNetworksByHand(address); }).join();
    const Sample sample = read(watch);
    if (listed != count) {
        throw std::runtime_error("the list by hand is not whole");
    }
    return sample;
}

struct Client {
    const char* name;
    std::function<Sample()> listing;
    Samples samples;
    Samples ratios;          // to the first client, in the same turn
    Samples ratiosToThread;  // to the second
};

void report(const Client& client, std::size_t count) {
    const bench::Spread time = bench::spreadOf(client.samples.times);
    const bench::Spread ratio = bench::spreadOf(client.ratios.times);
    bench::report("first list", client.name,
                  {{"n", static_cast<double>(count)},
                   {"turns", static_cast<double>(client.samples.times.size())},
                   {"us", time.median},
                   {"us_lower", time.lower},
                   {"us_upper", time.upper},
                   {"cpu_us", bench::spreadOf(client.samples.processor).median},
                   {"ratio", ratio.median},
                   {"ratio_lower", ratio.lower},
                   {"ratio_upper", ratio.upper},
                   {"cpu_ratio", bench::spreadOf(client.ratios.processor).median},
                   {"thread_ratio", bench::spreadOf(client.ratiosToThread.times).median},
                   {"cpu_thread_ratio", bench::spreadOf(client.ratiosToThread.processor).median}});
}

void runSize(const std::string& address, std::size_t count, std::size_t turns) {
    std::vector<double> ends;  // the times to destroy the Manager
    std::array<Client, 3> clients{{
        {"hand-written sd-bus", [&] { return timeByHand(address, count); }, {}, {}, {}},
        {"hand-written, on a thread", [&] { return timeByHandOnAThread(address, count); }, {}, {}, {}},
        {"libkazwifi", [&] { return timeOfManager(count, ends); }, {}, {}, {}},
    }};
    for (std::size_t turn = 0; turn < turns; ++turn) {
        std::array<Sample, clients.size()> samples;
        for (std::size_t i = 0; i < clients.size(); ++i) {
            const std::size_t next = (turn + i) % clients.size();
            samples.at(next) = clients.at(next).listing();
        }
        for (std::size_t i = 0; i < clients.size(); ++i) {
            Client& client = clients.at(i);
            client.samples.add(samples.at(i));
            client.ratios.add(samples.at(i) / samples.at(0));
            client.ratiosToThread.add(samples.at(i) / samples.at(1));
        }
    }
    for (const Client& client : clients) {
        report(client, count);
    }
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
