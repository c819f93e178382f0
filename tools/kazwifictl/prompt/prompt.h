#pragma once

#include "kazwifictl/input/options.h"
#include "kazwifictl/output/output.h"
#include "kazwifictl/session/workspace.h"

namespace kaz::ctl {

// Reads commands from the terminal, with history and completion, and runs them in one workspace. Ends at `quit`,
// `exit` or end of file, and returns the status of the last command. Ctrl-C ends a command or clears the line; any
// other signal throws Interrupted. Changes of the connection and of Wi-Fi on or off appear above the line.
ExitCode runPrompt(const Options& options, Workspace& place, Output& output);

}  // namespace kaz::ctl
