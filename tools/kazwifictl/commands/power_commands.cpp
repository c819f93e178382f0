#include <fmt/format.h>

#include <optional>
#include <string_view>

#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/failure.h"

namespace kaz::ctl {
namespace {

using wifi::FailureReason;

constexpr const char* notStored = "the choice could not be written to the configuration file";

// What is so after the request, as a report. `failure` says what of it was not done.
Report reportOf(bool on, bool changed, const Snapshot& now, const std::optional<Failure>& failure) {
    return {failure ? std::string()
                    : fmt::format("Wi-Fi is {}{}.\n", changed ? "" : "already ", on ? "on" : "off"),
            {{"enabled", now.enabled}, {"running", now.running}, {"changed", changed}},
            failure};
}

// systemd was not asked, or did not do it.
Failure notDone(bool on, bool stored, FailureReason reason) {
    const StackTrouble trouble = unitTrouble(reason);
    const std::string_view undone = on ? "wpa_supplicant was not started" : "wpa_supplicant was not stopped";
    return {reason == FailureReason::noBus ? ExitCode::noStack : ExitCode::failed,
            stored ? fmt::format("the choice is saved, but {}", undone)
                   : fmt::format("{}, and the choice is not saved", undone),
            trouble.why, trouble.advice};
}

Failure notKept(bool on) {
    return {ExitCode::failed,
            fmt::format("Wi-Fi is {}, but only until the next start of the device", on ? "on" : "off"),
            notStored, "checking the free space and the permissions of kaz.conf"};
}

// systemd took the request, but the supplicant does not follow.
Failure tooLate(bool on, Workspace& place, const Snapshot& now) {
    const std::string what = fmt::format("the choice is saved, but wpa_supplicant did not {} within {:g} s",
                                         on ? "start" : "stop", inSeconds(place.startWait()));
    const auto obstacle = now.connection.stack.place;
    const bool known = on && (obstacle == wifi::StackTrouble::Place::supplicant ||
                              obstacle == wifi::StackTrouble::Place::interface);
    return known ? noStack(what, now)
                 : Failure{on ? ExitCode::noStack : ExitCode::timedOut,
                           what,
                           {},
                           "systemctl status wpa_supplicant.service"};
}

// What of the request was not done, after it was carried out.
std::optional<Failure> missing(bool on, Workspace& place, Session& session) {
    const Session::Failures failures = session.takeFailures();
    const bool stored = !failures.contains(wifi::RequestFailure::choiceNotWritten);
    const auto refused = failures.find(wifi::RequestFailure::unitRefused);
    const bool nothingToStop =
        !on && refused != failures.end() && refused->second == FailureReason::unitMissing;
    if (refused != failures.end() && !nothingToStop && !(on && session.latest().running)) {
        return notDone(on, stored, refused->second);
    }
    if (!session.until(Clock::now() + place.startWait(),
                       [on](const Snapshot& view) { return view.running == on; })) {
        return tooLate(on, place, session.latest());
    }
    return stored ? std::nullopt : std::optional(notKept(on));
}

Report switchWifi(bool on, Workspace& place) {
    const std::string what = fmt::format("cannot switch Wi-Fi {}", on ? "on" : "off");
    Session& session = place.act(what, Workspace::Need::nothing);
    const bool changed = session.latest().enabled != on || session.latest().running != on;
    session.takeFailures();
    session.manager().setEnabled(on);
    // A supplicant that does not run may be about to start, so the request to stop it must have run.
    if (!session.carriedOut(Session::requestLimit)) {
        return reportOf(on, changed, session.latest(), noAnswer(what));
    }
    const auto failure = missing(on, place, session);
    place.finish();
    return reportOf(on, changed, session.latest(), failure);
}

}  // namespace

Report switchOn(const Options& /*options*/, Workspace& place, Output& /*output*/) {
    return switchWifi(true, place);
}

Report switchOff(const Options& /*options*/, Workspace& place, Output& /*output*/) {
    return switchWifi(false, place);
}

}  // namespace kaz::ctl
