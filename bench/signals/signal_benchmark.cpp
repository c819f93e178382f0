// One property signal from sender to handler, and 20,000 at once: the event loop compared with a plain sd-bus
// handler. Sender and receivers are threads of this process and use a bus.
//
//   signal_benchmark [--short]
#include "bench/measuring/figures.h"
#include "bench/measuring/program.h"
#include "bench/measuring/resident_memory.h"
#include "bench/measuring/stop_watch.h"
#include "bench/signals/receivers.h"
#include "bench/stand_in/stand_in_process.h"
#include "simulator/private_bus/private_bus.h"

#include <spdlog/spdlog.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace kaz::bench;

constexpr const char* ourPath = "/com/kazwifi/Bench1/ours";
constexpr const char* barePath = "/com/kazwifi/Bench1/bare";

void require(int result) {
    if (result < 0) {
        throw std::runtime_error("cannot send");
    }
}

void send(sd_bus* bus, const char* path) {
    require(sd_bus_emit_signal(bus, path, "org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as",
                               "fi.w1.wpa_supplicant1.Interface", 1, "State", "s", "scanning", 0));
    require(sd_bus_flush(bus));
}

// Sends a signal and waits for it; returns the us.
double latency(sd_bus* bus, const char* path, Reception& reception) {
    const std::uint32_t before = reception.count;
    const auto sent = std::chrono::steady_clock::now();
    send(bus, path);
    reception.count.wait(before);
    return std::chrono::duration<double, std::micro>(reception.at.load() - sent).count();
}

void storm(sd_bus* bus, const char* path, Reception& reception, std::uint32_t signals, const char* who) {
    const std::uint32_t expected = reception.count + signals;
    const double residentBefore = residentKilobytes();
    const StopWatch watch;
    for (std::uint32_t i = 0; i < signals; ++i) {
        send(bus, path);
    }
    const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (reception.count != expected && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    report("storm", who,
           {{"signals", static_cast<double>(signals)},
            {"lost", static_cast<double>(expected - reception.count)},
            {"us_each", watch.microseconds() / signals},
            {"cpu_us_each", watch.processorMicroseconds() / signals},
            {"kilobytes_grown", residentKilobytes() - residentBefore}});
}

void reportLatency(const char* who, const std::vector<double>& times) {
    report("latency", who, {{"us_p50", percentile(times, 0.5)}, {"us_p99", percentile(times, 0.99)}});
}

void run(bool brief) {
    spdlog::set_level(spdlog::level::warn);
    const kaz::sim::PrivateBus bus;
    bus.becomeSystemBus();
    const OpenBus sender = connectTo(bus.address());
    require(sd_bus_request_name(sender.get(), senderName, 0));
    const auto ours = makeOurReceiver(ourPath);
    const auto bare = makeBareReceiver(bus.address(), barePath);
    std::vector<double> ourTimes;
    std::vector<double> bareTimes;
    for (int i = 0; i < (brief ? 10 : 5000); ++i) {
        bareTimes.push_back(latency(sender.get(), barePath, bare->reception));
        ourTimes.push_back(latency(sender.get(), ourPath, ours->reception));
    }
    reportLatency("hand-written sd-bus", bareTimes);
    reportLatency("libkazwifi", ourTimes);
    const std::uint32_t signals = brief ? 200 : 20000;
    for (int turn = 0; turn < 3; ++turn) {
        storm(sender.get(), barePath, bare->reception, signals, "hand-written sd-bus");
        storm(sender.get(), ourPath, ours->reception, signals, "libkazwifi");
    }
}

}  // namespace

int main(int argc, char** argv) {
    return kaz::bench::runProgram(argc, argv, run);
}
