#include <fmt/format.h>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {
namespace {

Json powerJson(const Snapshot& view, bool changed) {
    return {{"enabled", view.enabled}, {"running", view.running}, {"changed", changed}};
}

// setEnabled() stores the choice before it returns. A failure is only logged, so the choice is read back.
void checkStored(const Workspace& place, bool wanted) {
    if (place.storedChoice() != wanted) {
        throw CommandFailed(
            {ExitCode::failed,
             fmt::format("Wi-Fi is {}, but only until the next start of the device", wanted ? "on" : "off"),
             "the choice could not be written to the configuration file",
             "checking the free space and the permissions of kaz.conf"});
    }
}

}  // namespace

Report switchOn(const Options& /*options*/, Workspace& place, Output& /*output*/) {
    const std::string what = "cannot switch Wi-Fi on";
    Session& session = place.act(what, Workspace::Need::nothing);
    const bool changed = !session.latest().enabled || !session.latest().running;
    session.manager().setEnabled(true);
    const LibraryLog::Hints hints = place.log().hints();
    const std::string late =
        fmt::format("wpa_supplicant did not start within {:g} s, or has no Wi-Fi interface",
                    inSeconds(place.startWait()));
    await(
        session, place.startWait(), [](const Snapshot& view) { return view.running; },
        hints.noBus ? noStack(what, session.latest(), hints)
                    : Failure{ExitCode::noStack, what, late, "systemctl status wpa_supplicant.service"});
    place.finish();
    checkStored(place, true);
    Snapshot view = session.latest();
    view.enabled = true;
    return {changed ? "Wi-Fi is on.\n" : "Wi-Fi is already on.\n", powerJson(view, changed), std::nullopt};
}

Report switchOff(const Options& /*options*/, Workspace& place, Output& /*output*/) {
    const std::string what = "cannot switch Wi-Fi off";
    Session& session = place.act(what, Workspace::Need::nothing);
    const bool changed = session.latest().enabled || session.latest().running;
    session.manager().setEnabled(false);
    await(session, place.startWait(), [](const Snapshot& view) { return !view.running; },
          {ExitCode::timedOut, what,
           fmt::format("wpa_supplicant did not stop within {:g} s", inSeconds(place.startWait())),
           "systemctl status wpa_supplicant.service"});
    // Without a fence, the request to stop may not have run: a supplicant that does not run may be about to start.
    place.fenceAndFinish();
    checkStored(place, false);
    Snapshot view = session.latest();
    view.enabled = false;
    return {changed ? "Wi-Fi is off.\n" : "Wi-Fi is already off.\n", powerJson(view, changed), std::nullopt};
}

}  // namespace kaz::ctl
