// The codec compared with the same work by hand over sd-bus: time, and calls of operator new.
#include "bench/codec/codec_tasks.h"
#include "bench/codec/counted_allocations.h"
#include "bench/codec/sample_messages.h"

#include <benchmark/benchmark.h>

#include <cstddef>

namespace {

using namespace kaz::bench;

void measure(benchmark::State& state, const CodecTask& task) {
    const std::size_t before = allocations();
    for (auto _ : state) {
        task.run();
    }
    state.counters["news"] =
        benchmark::Counter(static_cast<double>(allocations() - before), benchmark::Counter::kAvgIterations);
}

}  // namespace

int main(int argc, char** argv) {
    const BusPtr bus = makeUnconnectedBus();
    for (const CodecTask& task : codecTasks(bus.get())) {
        benchmark::RegisterBenchmark((task.name + '/' + task.who).c_str(), &measure, task);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
