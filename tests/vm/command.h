#pragma once

#include <string>

namespace kaz::vm {

// Runs a shell command of the guest, waits for its end, and returns what it wrote to stdout. Throws
// std::runtime_error with all of its output when it fails.
std::string run(const std::string& command);

// Whether the command ends with 0. What it writes is dropped.
bool succeeds(const std::string& command);

}  // namespace kaz::vm
