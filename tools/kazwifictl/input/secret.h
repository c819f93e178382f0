#pragma once

#include <optional>
#include <string>

#include "kazwifictl/process/caught_signals.h"

namespace kaz::ctl {

// Both functions read into memory that never moves; the caller wipes what they return.

// Asks on the controlling terminal, without showing what is typed, and takes one line. Whatever ends the
// question, the terminal shows what is typed again: also after Ctrl-C (which throws Interrupted), while the
// process is stopped by Ctrl-Z, and at end of file (an empty answer). Throws CommandFailed without a
// terminal.
std::string askSecret(const std::string& question, Interrupts& interrupts);

// The first line of a file, or of the standard input when `path` is "-", without its line break. Throws
// CommandFailed when it cannot be read or is longer than 4096 bytes, and Interrupted.
std::string readSecret(const std::string& path, Interrupts& interrupts);

}  // namespace kaz::ctl
