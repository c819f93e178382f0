#include <fmt/format.h>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {
namespace {

void checkStored(Session& session, bool wanted) {
    if (session.takeFailures().contains(wifi::RequestFailure::choiceNotWritten)) {
        throw CommandFailed(
            {ExitCode::failed,
             fmt::format("Wi-Fi is {}, but only until the next start of the device", wanted ? "on" : "off"),
             "the choice could not be written to the configuration file",
             "checking the free space and the permissions of kaz.conf"});
    }
}

Report switchWifi(bool on, Workspace& place) {
    const std::string_view word = on ? "on" : "off";
    const std::string what = fmt::format("cannot switch Wi-Fi {}", word);
    Session& session = place.act(what, Workspace::Need::nothing);
    const bool changed = session.latest().enabled != on || session.latest().running != on;
    session.takeFailures();
    session.manager().setEnabled(on);
    const LibraryLog::Hints hints = place.log().hints();
    const std::string late =
        fmt::format("wpa_supplicant did not {} within {:g} s{}", on ? "start" : "stop",
                    inSeconds(place.startWait()), on ? ", or has no Wi-Fi interface" : "");
    await(
        session, place.startWait(), [on](const Snapshot& view) { return view.running == on; },
        on && hints.noBus ? noStack(what, session.latest(), hints)
                          : Failure{on ? ExitCode::noStack : ExitCode::timedOut, what, late,
                                    "systemctl status wpa_supplicant.service"});
    // A supplicant that does not run may be about to start, so the request to stop it must have run.
    place.carryOutAndFinish();
    checkStored(session, on);
    return {fmt::format("Wi-Fi is {}{}.\n", changed ? "" : "already ", word),
            {{"enabled", on}, {"running", session.latest().running}, {"changed", changed}},
            std::nullopt};
}

}  // namespace

Report switchOn(const Options& /*options*/, Workspace& place, Output& /*output*/) {
    return switchWifi(true, place);
}

Report switchOff(const Options& /*options*/, Workspace& place, Output& /*output*/) {
    return switchWifi(false, place);
}

}  // namespace kaz::ctl
