#pragma once

#include <optional>
#include <string>

#include "kazwifictl/input/options.h"
#include "kazwifictl/output/output.h"
#include "kazwifictl/session/workspace.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

// What came of a command, for both kinds of readers.
struct Report {
    std::string text;
    Json members = Json::object();
    std::optional<Failure> failure;
};

// One function a command. Each returns when what was asked for has been done and saved, or has failed; it
// throws CommandFailed and Interrupted where nothing but the failure or the signal is to be reported.
Report showStatus(const Options& options, Workspace& place, Output& output);
Report switchOn(const Options& options, Workspace& place, Output& output);
Report switchOff(const Options& options, Workspace& place, Output& output);
Report listNetworks(const Options& options, Workspace& place, Output& output);
Report scanNetworks(const Options& options, Workspace& place, Output& output);
Report connectTo(const Options& options, Workspace& place, Output& output);
Report disconnectFrom(const Options& options, Workspace& place, Output& output);
Report forgetNetwork(const Options& options, Workspace& place, Output& output);

// Runs until interrupted, writing as it goes; the report is empty.
Report monitorChanges(const Options& options, Workspace& place, Output& output);

// Has the supplicant look for networks, or joins a scan in progress; returns the state with what it found.
Snapshot lookAround(const std::string& what, Workspace& place, Output& output);

// Writes a report to the output; returns the exit status it stands for.
ExitCode present(const Report& report, Command command, Output& output);

// Runs the command that the options name and shows what came of it. Returns its exit status.
ExitCode runCommand(const Options& options, Workspace& place, Output& output);

}  // namespace kaz::ctl
