#pragma once

#include <optional>
#include <string>

#include "kazwifictl/process/caught_signals.h"

namespace kaz::ctl {

// askSecret() and readSecret() read into memory that never moves. The caller must wipe the result.

// Asks on the controlling terminal, with the echo off, and reads one line. The echo is on again after the
// question, however it ends: also after Ctrl-C (throws Interrupted), while Ctrl-Z stops the process, and at end
// of file (returns an empty answer). Throws CommandFailed when there is no terminal.
std::string askSecret(const std::string& question, Interrupts& interrupts);

// Asks on the controlling terminal and reads one line, which is shown as it is typed. Throws as askSecret().
std::string askLine(const std::string& question, Interrupts& interrupts);

// Asks a question that is answered with y or n. Anything but y or yes is no.
bool askYes(const std::string& question, Interrupts& interrupts);

// Reads the first line of a file, or of the standard input when `path` is "-", without its line break. Throws
// CommandFailed when the line cannot be read or is longer than 4096 bytes, and Interrupted on a signal.
std::string readSecret(const std::string& path, Interrupts& interrupts);

}  // namespace kaz::ctl
