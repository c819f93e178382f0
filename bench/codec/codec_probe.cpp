// Runs one of the codec's tasks a given number of times, to count its instructions.
//
//   codec_probe NUMBER TIMES     the first task is number 0; an unknown number gives status 2
//   codec_probe                  prints their names, "what/who", one per line
#include "bench/codec/codec_tasks.h"
#include "bench/codec/sample_messages.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace kaz::bench;

int probe(const std::vector<CodecTask>& tasks, std::size_t number, int times) {
    if (number >= tasks.size()) {
        return 2;
    }
    for (int i = 0; i < times; ++i) {
        tasks[number].run();
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const BusPtr bus = makeUnconnectedBus();
    const std::vector<CodecTask> tasks = codecTasks(bus.get());
    if (argc == 3) {
        return probe(tasks, std::strtoul(argv[1], nullptr, 10), std::atoi(argv[2]));
    }
    for (const CodecTask& task : tasks) {
        std::printf("%s/%s\n", task.name.c_str(), task.who.c_str());
    }
    return 0;
}
