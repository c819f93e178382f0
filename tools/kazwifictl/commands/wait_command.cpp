#include <fmt/format.h>

#include <string>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {
namespace {

bool isReached(WaitedState state, const Snapshot& view) {
    switch (state) {
        case WaitedState::on:
            return view.running;
        case WaitedState::off:
            return !view.running && !isUnknown(view);
        case WaitedState::connected:
            return view.connection.info.status == wifi::ConnectionInfo::Status::connected;
        case WaitedState::disconnected:
            break;
    }
    return view.isDisconnected() && !isUnknown(view);
}

std::string reachedText(WaitedState state, const Snapshot& view, const Output& output) {
    switch (state) {
        case WaitedState::on:
            return "Wi-Fi can be used.\n";
        case WaitedState::off:
            return "wpa_supplicant does not run.\n";
        case WaitedState::connected:
            return fmt::format("Connected to {}.\n", output.name(view.connection.info.ssid));
        case WaitedState::disconnected:
            break;
    }
    return "Not connected.\n";
}

Failure notReached(const Options& options, const Snapshot& view) {
    const std::string what =
        fmt::format("the state \"{}\" is not reached after {:g} s", nameOf(options.waitedState),
                    inSeconds(options.timeout.value_or(std::chrono::milliseconds(0))));
    if (view.running || options.waitedState == WaitedState::disconnected) {
        return {ExitCode::timedOut, what, {}, "kazwifictl status"};
    }
    const StackTrouble trouble = stackTrouble(view);
    return {ExitCode::timedOut, what, trouble.why, trouble.advice};
}

}  // namespace

Report waitForState(const Options& options, Workspace& place, Output& output) {
    Session& session = place.act("cannot wait", Workspace::Need::nothing);
    output.sayForNow(fmt::format("waiting for \"{}\"...", nameOf(options.waitedState)));
    const bool reached =
        session.until(options.timeout ? Clock::now() + *options.timeout : Clock::time_point::max(),
                      [&](const Snapshot& view) { return isReached(options.waitedState, view); });
    const Snapshot view = session.latest();
    Report report{reached ? reachedText(options.waitedState, view, output) : std::string(),
                  {{"state", nameOf(options.waitedState)},
                   {"enabled", view.enabled},
                   {"running", view.running},
                   {"connection", connectionJson(view.connection, Clock::now())}},
                  std::nullopt};
    if (!reached) {
        report.failure = notReached(options, view);
    }
    place.finish();
    return report;
}

}  // namespace kaz::ctl
