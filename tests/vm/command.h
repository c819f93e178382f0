#pragma once

#include <string>

namespace kaz::vm {

// Runs a shell command in the guest, waits for its end, and returns its stdout. Throws std::runtime_error
// with all of its output if it fails.
std::string run(const std::string& command);

// Whether the command exits with 0. Its output is dropped.
bool succeeds(const std::string& command);

}  // namespace kaz::vm
