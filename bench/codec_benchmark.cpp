// The codec beside the same work done by hand over sd-bus, on messages in memory: no bus takes part.
#include "counted_allocations.h"
#include "hand_written_codec.h"
#include "records.h"
#include "sample_messages.h"
#include "variant.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace kaz::bench {
namespace {

// Runs `work` again and again and reports its calls of operator new beside its time.
template <typename Work>
void measure(benchmark::State& state, Work work) {
    const std::size_t before = allocations();
    for (auto _ : state) {
        work();
    }
    state.counters["news"] =
        benchmark::Counter(static_cast<double>(allocations() - before), benchmark::Counter::kAvgIterations);
}

void check(bool good) {
    if (!good) {
        throw std::runtime_error("a sample did not decode");
    }
}

void readBssCodec(benchmark::State& state) {
    const BusPtr bus = makeUnconnectedBus();
    const dbus::MessagePtr message = makeBssProperties(bus.get());
    measure(state, [&] {
        sd_bus_message_rewind(message.get(), 1);
        const auto bss = dbus::read<wifi::BSSData>(message.get());
        check(bss && bss->signal == -63);
        benchmark::DoNotOptimize(bss);
    });
}
BENCHMARK(readBssCodec);

void readBssByHand(benchmark::State& state) {
    const BusPtr bus = makeUnconnectedBus();
    const dbus::MessagePtr message = makeBssProperties(bus.get());
    measure(state, [&] {
        sd_bus_message_rewind(message.get(), 1);
        wifi::BSSData bss;
        check(bench::readBssByHand(message.get(), bss) >= 0 && bss.signal == -63);
        benchmark::DoNotOptimize(bss);
    });
}
BENCHMARK(readBssByHand);

void readPropertiesChangedCodec(benchmark::State& state) {
    const BusPtr bus = makeUnconnectedBus();
    const dbus::MessagePtr message = makePropertiesChanged(bus.get());
    measure(state, [&] {
        sd_bus_message_rewind(message.get(), 1);
        const auto properties = dbus::read<dbus::SupplicantInterfaceProperties>(message.get());
        check(properties && properties->state);
        benchmark::DoNotOptimize(properties);
    });
}
BENCHMARK(readPropertiesChangedCodec);

void readPropertiesChangedByHand(benchmark::State& state) {
    const BusPtr bus = makeUnconnectedBus();
    const dbus::MessagePtr message = makePropertiesChanged(bus.get());
    measure(state, [&] {
        sd_bus_message_rewind(message.get(), 1);
        dbus::SupplicantInterfaceProperties properties;
        check(bench::readPropertiesChangedByHand(message.get(), properties) >= 0 && properties.state);
        benchmark::DoNotOptimize(properties);
    });
}
BENCHMARK(readPropertiesChangedByHand);

void writeNetworkCodec(benchmark::State& state) {
    const BusPtr bus = makeUnconnectedBus();
    const dbus::Variant::Map network{
        {"ssid", "Neighbour5"}, {"key_mgmt", "WPA-PSK"}, {"psk", "correct horse battery"}, {"ieee80211w", 1}};
    measure(state, [&] {
        const dbus::MessagePtr message = makeSignal(bus.get());
        check(dbus::write(message.get(), network).has_value());
    });
}
BENCHMARK(writeNetworkCodec);

void writeNetworkByHand(benchmark::State& state) {
    const BusPtr bus = makeUnconnectedBus();
    measure(state, [&] {
        const dbus::MessagePtr message = makeSignal(bus.get());
        check(bench::writeNetworkByHand(message.get()) >= 0);
    });
}
BENCHMARK(writeNetworkByHand);

}  // namespace
}  // namespace kaz::bench
