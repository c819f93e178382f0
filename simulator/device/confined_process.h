#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace kaz::sim {

// Starts a command in a new network namespace, with these variables added to the environment. The process is
// killed when the calling thread ends. Throws std::system_error when no process can be started; a command that
// cannot run exits with status 127.
pid_t startConfined(const std::vector<std::string>& command,
                    const std::map<std::string, std::string>& variables);

}  // namespace kaz::sim
