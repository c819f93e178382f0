#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace kaz::sim {

// Starts a command, which gets SIGTERM when the calling thread ends. It has no blocked signals. Throws
// std::system_error when no process can be started; a command that cannot run exits with status 127.
pid_t startChild(const std::vector<std::string>& command);

// Converts a wait status into an exit status, as a shell does.
int exitStatus(int waitStatus);

}  // namespace kaz::sim
