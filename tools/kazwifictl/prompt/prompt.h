#pragma once

#include "kazwifictl/input/options.h"
#include "kazwifictl/output/output.h"
#include "kazwifictl/session/workspace.h"

namespace kaz::ctl {

// Reads commands from the terminal, with history and completion, and runs them in one workspace until `quit`,
// end of file or a signal, which it throws as Interrupted. Ctrl-C ends a command or clears the line. What
// happens meanwhile is told above the line. Returns the status of the last command.
ExitCode runPrompt(const Options& options, Workspace& place, Output& output);

}  // namespace kaz::ctl
