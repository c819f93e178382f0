// How long the engine takes to make the published list from the reported access points: rebuild, sort,
// publish.
//
//   list_benchmark [--short]
#include "bench/measuring/figures.h"
#include "bench/measuring/stop_watch.h"
#include "doubles/fake_communicator/fake_communicator.h"
#include "manager/manager_impl.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace kaz;
using Bss = wifi::Communicator::BssProperties;

// Access points, each of a separate network, unsorted.
std::vector<Bss> makeAir(std::size_t count, std::mt19937& random) {
    std::uniform_int_distribution<int> signal(-95, -30);
    std::vector<Bss> air;
    for (std::size_t i = 0; i < count; ++i) {
        air.push_back({"Neighbour" + std::to_string(i), signal(random), wifi::SecurityMode::rsnPsk});
    }
    std::shuffle(air.begin(), air.end(), random);
    return air;
}

void runSize(std::size_t count, std::size_t turns) {
    const auto stack = std::make_shared<test::FakeWifiStack>();
    auto owned = std::make_unique<test::FakeCommunicator>(stack);
    test::FakeCommunicator& communicator = *owned;
    wifi::ManagerImpl manager(std::move(owned), std::make_shared<wifi::TimeProviderWallClock>());
    communicator.runIdlePass();
    std::size_t published = 0;
    manager.onNetworksListChanged([&] { ++published; });
    std::mt19937 random(1);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same each time
    std::vector<double> times;
    for (std::size_t turn = 0; turn < turns; ++turn) {
        wifi::Communicator::SupplicantInterfaceProperties report;
        report.bssListChange = wifi::Communicator::PropertyChange::Set;
        report.bssList = makeAir(count, random);
        communicator.supplicantPropertiesHandler(std::move(report));
        const bench::StopWatch watch;
        communicator.runIdlePass();
        times.push_back(watch.processorMicroseconds());
    }
    const bench::Spread spread = bench::spreadOf(times);
    const auto n = static_cast<double>(count);
    bench::report("list", "libkazwifi",
                  {{"n", n},
                   {"published", static_cast<double>(published) / static_cast<double>(turns)},
                   {"us", spread.median},
                   {"us_lower", spread.lower},
                   {"us_upper", spread.upper},
                   {"us_each", spread.median / n},
                   {"ns_per_n_log_n", spread.median * 1000 / (n * std::log2(n))}});
}

}  // namespace

int main(int argc, char** argv) {
    const bool brief = argc > 1 && std::string_view(argv[1]) == "--short";
    spdlog::set_level(spdlog::level::warn);
    for (const std::size_t count : {10U, 30U, 100U, 300U, 1000U, 10000U, 100000U}) {
        runSize(count, brief ? 2 : count > 1000 ? 15 : 200);
    }
}
