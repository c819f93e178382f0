// How long the caller waits in a getter or a request: with an idle loop, with a loop that reads 1,000 access
// points, and with a loop that waits for a peer that hangs.
//
//   getters_benchmark [--short]
#include "bench/manager/published_list.h"
#include "bench/measuring/figures.h"
#include "bench/measuring/program.h"
#include "bench/stand_in/stand_in_process.h"
#include "simulator/private_bus/private_bus.h"

#include <spdlog/spdlog.h>
#include <wifi/manager.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace kaz;
using Clock = std::chrono::steady_clock;

constexpr unsigned networkCount = 50;
constexpr unsigned busyCount = 1000;

// An unknown network: the stand-in refuses to add it.
const wifi::ConnectionSettings home = [] {
    wifi::ConnectionSettings settings;
    settings.ssid = "A network at home";
    settings.securityMode = wifi::SecurityMode::rsnPsk;
    settings.password = "what opens it";
    return settings;
}();

// The ns of each of `calls` calls, averaged over `batch` calls if one is too short for the clock.
template <typename Call>
std::vector<double> sample(std::size_t calls, int batch, Call call) {
    std::vector<double> times;
    times.reserve(calls);
    for (std::size_t i = 0; i < calls; ++i) {
        const Clock::time_point start = Clock::now();
        for (int j = 0; j < batch; ++j) {
            call();
        }
        times.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count() / batch);
    }
    return times;
}

void reportCalls(const std::string& what, const std::string& when, const std::vector<double>& times) {
    bench::report("getters", what + ", " + when,
                  {{"ns_p50", bench::percentile(times, 0.5)},
                   {"ns_p99", bench::percentile(times, 0.99)},
                   {"ns_max", bench::percentile(times, 1)}});
}

void measure(wifi::Manager& manager, const std::string& when, std::size_t calls) {
    reportCalls("networks() of 50", when, sample(calls, 1, [&] {
                    if (manager.networks().size() != networkCount) {
                        throw std::runtime_error("the list changed");
                    }
                }));
    reportCalls("the three flags", when, sample(calls, 32, [&] {
                    static_cast<void>(manager.isEnabled());
                    static_cast<void>(manager.isScanning());
                    static_cast<void>(manager.isWifiStackInitialized());
                }));
    reportCalls("connectionInfo()", when,
                sample(calls, 1, [&] { static_cast<void>(manager.connectionInfo()); }));
    // So few that none is dropped.
    const std::size_t requests = std::min<std::size_t>(calls, 2000);
    reportCalls("scan()", when, sample(requests, 1, [&] { manager.scan(); }));
    reportCalls("connect()", when, sample(requests, 1, [&] {
                    if (manager.connect(home) != wifi::ConnectResult::ok) {
                        throw std::runtime_error("the settings are refused");
                    }
                }));
}

// Whether the loop runs a task within this time.
bool loopIsBusy(wifi::Manager& manager, const std::shared_ptr<std::promise<void>>& reached) {
    manager.onEnabledChanged([reached] { reached->set_value(); });
    manager.setEnabled(!manager.isEnabled());
    return reached->get_future().wait_for(std::chrono::milliseconds(5)) == std::future_status::timeout;
}

void run(bool brief) {
    spdlog::set_level(spdlog::level::off);
    const sim::PrivateBus bus;
    bus.becomeSystemBus();
    bench::StandInProcess standIn(bus.address());
    standIn.setBssCount(networkCount);
    standIn.setSsidCount(networkCount);
    auto owned = std::make_unique<wifi::Manager>();
    wifi::Manager& manager = *owned;
    bench::awaitList(manager);
    const std::size_t calls = brief ? 100 : 20000;
    measure(manager, "idle", calls);

    for (int update = 0; update < (brief ? 1 : 20); ++update) {
        standIn.report(busyCount);
    }
    measure(manager, "busy", calls);
    if (!loopIsBusy(manager, std::make_shared<std::promise<void>>())) {
        throw std::runtime_error("the loop was done before the getters were");
    }

    standIn.hang(true);
    measure(manager, "peer hangs", calls);
    if (!loopIsBusy(manager, std::make_shared<std::promise<void>>())) {
        throw std::runtime_error("the loop did not wait for the peer");
    }
    const Clock::time_point start = Clock::now();
    owned.reset();
    const std::chrono::duration<double, std::micro> end = Clock::now() - start;
    bench::report("end", "libkazwifi, peer hangs", {{"us", end.count()}});
}

}  // namespace

int main(int argc, char** argv) {
    return kaz::bench::runProgram(argc, argv, run);
}
