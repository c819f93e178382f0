#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace kaz::test {

// Where in the memory of a process of this user a piece of the secret lies: the names of the regions, or "anonymous".
// Throws std::system_error when the memory cannot be read.
std::vector<std::string> placesInMemory(pid_t process, const std::string& secret);

}  // namespace kaz::test
