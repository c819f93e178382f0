#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <string>
#include <vector>

namespace kaz::bench {

// One thing the codec does, or the same done by hand over sd-bus; on a message in memory, so that no bus takes
// part. `run` throws when the outcome is wrong.
struct CodecTask {
    std::string name;  // "read a BSS"
    std::string who;   // "libkazwifi" or "hand-written sd-bus"
    std::function<void()> run;
};

// All of them, in pairs. They use the bus to make messages and must not outlive it.
std::vector<CodecTask> codecTasks(sd_bus* bus);

}  // namespace kaz::bench
