#pragma once

#include <optional>
#include <string>

#include "kazwifictl/input/options.h"
#include "kazwifictl/output/output.h"
#include "kazwifictl/session/workspace.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {

// The result of a command: `text` for a person, `members` for JSON.
struct Report {
    std::string text;
    Json members = Json::object();
    std::optional<Failure> failure;
};

// One function per command. Each returns when its work is done and saved, or has failed. It throws CommandFailed
// when only the failure is to be reported, and Interrupted on a signal.
Report showStatus(const Options& options, Workspace& place, Output& output);
Report switchOn(const Options& options, Workspace& place, Output& output);
Report switchOff(const Options& options, Workspace& place, Output& output);
Report listNetworks(const Options& options, Workspace& place, Output& output);
Report scanNetworks(const Options& options, Workspace& place, Output& output);
Report connectTo(const Options& options, Workspace& place, Output& output);
Report disconnectFrom(const Options& options, Workspace& place, Output& output);
Report forgetNetwork(const Options& options, Workspace& place, Output& output);

// Finds what is wrong with the device. Does not use the library.
Report findFaults(const Options& options, Workspace& place, Output& output);

// Shows the country whose radio rules apply, or sets and saves it. Does not use the library for it.
Report showOrSetCountry(const Options& options, Workspace& place, Output& output);

// Returns when the state that the options name is reached.
Report waitForState(const Options& options, Workspace& place, Output& output);

// Writes what is known of the device to a new file, without secrets.
Report writeReport(const Options& options, Workspace& place, Output& output);

// Throws CommandFailed for a command that examines the machine.
void checkNotSimulated(const Options& options, const std::string& what);

// Writes each change until a signal or a write error ends it. The report is empty.
Report monitorChanges(const Options& options, Workspace& place, Output& output);

// Requests a scan, or waits for the one in progress. Returns the state with its results.
Snapshot lookAround(const std::string& what, Workspace& place, Output& output);

// Throws CommandFailed when no network can have this name. The library checks it too, but only after the user has
// typed a password.
void checkSsid(const std::string& ssid, const std::string& what);

// The failure to save the supplicant's configuration.
Failure notWritten(const std::string& what);

// Writes a report to the output. Returns its exit status.
ExitCode present(const Report& report, Command command, Output& output);

// Runs the command that the options name, and writes its report. Returns its exit status.
ExitCode runCommand(const Options& options, Workspace& place, Output& output);

}  // namespace kaz::ctl
