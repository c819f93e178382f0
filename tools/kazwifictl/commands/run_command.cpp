#include <map>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {
namespace {

using Function = Report (*)(const Options&, Workspace&, Output&);

const std::map<Command, Function> functions{
    {Command::status, showStatus},
    {Command::on, switchOn},
    {Command::off, switchOff},
    {Command::scan, scanNetworks},
    {Command::list, listNetworks},
    {Command::connect, connectTo},
    {Command::disconnect, disconnectFrom},
    {Command::forget, forgetNetwork},
    {Command::monitor, monitorChanges},
    {Command::wait, waitForState},
    {Command::country, showOrSetCountry},
    {Command::doctor, findFaults},
    {Command::report, writeReport},
};

}  // namespace

void checkSsid(const std::string& ssid, const std::string& what) {
    if (ssid.empty() || ssid.size() > wifi::MaxSsidBytes) {
        throw CommandFailed(
            {ExitCode::refused, what,
             brokenRule(ssid.empty() ? wifi::ConnectResult::ssidEmpty : wifi::ConnectResult::ssidTooLong,
                        wifi::SecurityMode::none),
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
        const auto function = functions.find(options.command);
        report = function == functions.end() ? Report{} : function->second(options, place, output);
    } catch (const CommandFailed& failed) {
        report.failure = failed.failure();
        if (options.command == Command::connect || (options.command == Command::forget && !options.all)) {
            report.members = ssidMembers(options.ssid);
        }
    }
    return present(report, options.command, output);
}

}  // namespace kaz::ctl
