#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace kaz::sim {

// Starts a command in a network namespace of its own, with those variables added to the environment. It is
// killed when the calling thread ends. Throws std::system_error when there can be no process; a command that
// cannot run exits with status 127.
pid_t startConfined(const std::vector<std::string>& command,
                    const std::map<std::string, std::string>& variables);

}  // namespace kaz::sim
