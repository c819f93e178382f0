// 20,000 signals at once, each of which changes the published state of a Manager.
//
//   storm_benchmark [--short]
#include "bench/manager/published_list.h"
#include "bench/measuring/figures.h"
#include "bench/measuring/program.h"
#include "bench/measuring/resident_memory.h"
#include "bench/measuring/stop_watch.h"
#include "bench/stand_in/stand_in_process.h"
#include "simulator/private_bus/private_bus.h"

#include <spdlog/spdlog.h>
#include <wifi/manager.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <thread>

namespace {

using namespace kaz;

constexpr std::uint32_t networkCount = 50;

void storm(wifi::Manager& manager, bench::StandInProcess& standIn, const std::atomic<std::uint32_t>& told,
           std::uint32_t changes) {
    const std::uint32_t expected = told + changes;
    const double residentBefore = bench::residentKilobytes();
    const bench::StopWatch watch;
    standIn.reportScans(changes);
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (told != expected && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    bench::report("storm", "libkazwifi, a whole Manager",
                  {{"signals", static_cast<double>(changes)},
                   {"lost", static_cast<double>(expected - told)},
                   {"us_each", watch.microseconds() / changes},
                   {"cpu_us_each", watch.processorMicroseconds() / changes},
                   {"kilobytes_grown", bench::residentKilobytes() - residentBefore}});
    if (manager.isScanning()) {
        throw std::runtime_error("the last change was not the last to be seen");
    }
}

void run(bool brief) {
    spdlog::set_level(spdlog::level::warn);
    const sim::PrivateBus bus;
    bus.becomeSystemBus();
    bench::StandInProcess standIn(bus.address());
    standIn.setBssCount(networkCount);
    std::atomic<std::uint32_t> told = 0;
    wifi::Manager manager;
    bench::awaitList(manager);
    manager.onScanningChanged([&told] { ++told; });
    for (int turn = 0; turn < 3; ++turn) {
        storm(manager, standIn, told, brief ? 200 : 20000);
    }
}

}  // namespace

int main(int argc, char** argv) {
    return kaz::bench::runProgram(argc, argv, run);
}
