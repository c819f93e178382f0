#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace kaz::sim {

// Starts a command that is sent SIGTERM when the calling thread ends. Signals are not blocked in it. Throws
// std::system_error when there can be no process; a command that cannot run exits with status 127.
pid_t startChild(const std::vector<std::string>& command);

// What a shell makes of the way a process ended.
int exitStatus(int waitStatus);

}  // namespace kaz::sim
