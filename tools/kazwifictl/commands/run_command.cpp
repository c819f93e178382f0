#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {
namespace {

Report reportOf(const Options& options, Workspace& place, Output& output) {
    switch (options.command) {
        case Command::status:
            return showStatus(options, place, output);
        case Command::on:
            return switchOn(options, place, output);
        case Command::off:
            return switchOff(options, place, output);
        case Command::scan:
            return scanNetworks(options, place, output);
        case Command::list:
            return listNetworks(options, place, output);
        case Command::connect:
            return connectTo(options, place, output);
        case Command::disconnect:
            return disconnectFrom(options, place, output);
        case Command::forget:
            return forgetNetwork(options, place, output);
        case Command::monitor:
            return monitorChanges(options, place, output);
        case Command::prompt:
            break;
    }
    return {};
}

}  // namespace

void checkSsid(const std::string& ssid, const std::string& what) {
    if (ssid.empty() || ssid.size() > 32) {
        throw CommandFailed({ExitCode::refused, what,
                             ssid.empty() ? "the SSID is empty" : "the SSID is longer than 32 bytes",
                             "a name of 1 to 32 bytes"});
    }
}

Failure notWritten(const std::string& what) {
    return {ExitCode::failed, what, "wpa_supplicant did not write its configuration",
            "update_config=1 in wpa_supplicant.conf"};
}

ExitCode present(const Report& report, Command command, Output& output) {
    const Failure* failure = report.failure ? &*report.failure : nullptr;
    output.say(report.text);
    if (command != Command::monitor || failure != nullptr) {
        output.show(document(nameOf(command), report.members, failure));
    }
    if (failure != nullptr) {
        output.complain(*failure);
    }
    return failure == nullptr ? ExitCode::done : failure->code;
}

ExitCode runCommand(const Options& options, Workspace& place, Output& output) {
    Report report;
    try {
        report = reportOf(options, place, output);
    } catch (const CommandFailed& failed) {
        report.failure = failed.failure();
        if (options.command == Command::connect || options.command == Command::forget) {
            report.members = ssidMembers(options.ssid);
        }
    }
    return present(report, options.command, output);
}

}  // namespace kaz::ctl
