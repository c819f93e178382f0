#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <string>
#include <vector>

namespace kaz::bench {

// One operation of the codec, or the same by hand over sd-bus, on a message in memory and without a bus.
// `run` throws if the result is wrong.
struct CodecTask {
    std::string name;  // "read a BSS"
    std::string who;   // "libkazwifi" or "hand-written sd-bus"
    std::function<void()> run;
};

// All tasks, in pairs. They use the bus to make messages and must not outlive it.
std::vector<CodecTask> codecTasks(sd_bus* bus);

}  // namespace kaz::bench
