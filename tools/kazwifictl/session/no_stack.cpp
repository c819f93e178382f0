#include "kazwifictl/session/no_stack.h"

#include <chrono>
#include <optional>
#include <string_view>

#include "inspection/bus_facts.h"
#include "inspection/facts.h"

namespace kaz::ctl {
namespace {

constexpr const char* readUnit = "systemctl status wpa_supplicant.service";

bool isDenied(std::string_view error) {
    return error == "org.freedesktop.DBus.Error.AccessDenied" ||
           error == "org.freedesktop.DBus.Error.InteractiveAuthorizationRequired" ||
           error == "System.Error.EACCES" || error == "System.Error.EPERM";
}

bool isAbsent(std::string_view error) {
    return error == "org.freedesktop.DBus.Error.ServiceUnknown" ||
           error == "org.freedesktop.DBus.Error.NameHasNoOwner";
}

bool isTimeout(std::string_view error) {
    return error == "org.freedesktop.DBus.Error.NoReply" || error == "org.freedesktop.DBus.Error.Timeout" ||
           error == "org.freedesktop.DBus.Error.TimedOut" || error == "System.Error.ETIMEDOUT";
}

StackTrouble missingUnit() {
    return {"the unit wpa_supplicant.service does not exist", "installing wpa_supplicant"};
}

StackTrouble maskedUnit() {
    return {"the unit wpa_supplicant.service is masked", "systemctl unmask wpa_supplicant.service"};
}

// Why the unit is not active. The library reports only that it is not, so this asks systemd.
StackTrouble inactiveUnit() {
    constexpr std::chrono::milliseconds limit{1200};
    inspection::Facts facts;
    inspection::readBus(facts, limit);
    if (facts.unit.isKnown() && facts.unit->loadState == "not-found") {
        return missingUnit();
    }
    if (facts.unit.isKnown() && facts.unit->loadState == "masked") {
        return maskedUnit();
    }
    if (facts.unit.isKnown() && facts.unit->activeState == "failed") {
        return {"wpa_supplicant has failed", "journalctl -u wpa_supplicant.service"};
    }
    if (facts.unit.isKnown() && facts.unit->activeState == "activating") {
        return {"wpa_supplicant is still starting", "a longer --start-wait"};
    }
    return {supplicantStopped, "kazwifictl on"};
}

// What the supplicant, or the bus in its place, answered.
StackTrouble supplicantTrouble(const LibraryLog::Hints& hints) {
    if (isDenied(hints.supplicantError)) {
        return {"the policy of the system bus does not let this user talk to wpa_supplicant",
                "the command as root, or a user of the group that the policy names"};
    }
    if (isAbsent(hints.supplicantError)) {
        return {"wpa_supplicant runs, but is not on the system bus", "starting wpa_supplicant with -u"};
    }
    if (isTimeout(hints.supplicantError)) {
        return {"wpa_supplicant does not answer", "systemctl restart wpa_supplicant.service"};
    }
    if (hints.noInterface) {
        return {"wpa_supplicant has no Wi-Fi interface",
                "ip link, then starting wpa_supplicant with -i INTERFACE"};
    }
    return inactiveUnit();
}

}  // namespace

StackTrouble unitTrouble(const LibraryLog::Hints& hints) {
    if (hints.noBus) {
        return {"the system bus cannot be reached", "systemctl status dbus.service"};
    }
    if (isUnitMissing(hints)) {
        return missingUnit();
    }
    if (hints.systemdError == "org.freedesktop.systemd1.UnitMasked") {
        return maskedUnit();
    }
    if (isDenied(hints.systemdError)) {
        return {"systemd does not let this user start or stop wpa_supplicant", "the command as root"};
    }
    if (isAbsent(hints.systemdError)) {
        return {"systemd is not on the system bus", "busctl status org.freedesktop.systemd1"};
    }
    if (isTimeout(hints.systemdError)) {
        return {"systemd does not answer on the system bus", "busctl status org.freedesktop.systemd1"};
    }
    return {"systemd refused it", readUnit};
}

StackTrouble stackTrouble(const Snapshot& now, const LibraryLog::Hints& hints) {
    if (hints.noBus) {
        return unitTrouble(hints);
    }
    if (isUnknown(now, hints)) {
        return isDenied(hints.systemdError)
                   ? StackTrouble{"systemd does not tell this user whether wpa_supplicant runs",
                                  "the command as root"}
                   : unitTrouble(hints);
    }
    if (!now.enabled) {
        return {"Wi-Fi is switched off", "kazwifictl on"};
    }
    return supplicantTrouble(hints);
}

Failure noStack(const std::string& what, const Snapshot& now, const LibraryLog::Hints& hints) {
    const StackTrouble trouble = stackTrouble(now, hints);
    return {ExitCode::noStack, what, trouble.why, trouble.advice};
}

Failure noAnswer(const std::string& what, const LibraryLog::Hints& hints) {
    if (hints.unitFound) {
        return {ExitCode::noStack, what, "wpa_supplicant does not answer",
                "systemctl restart wpa_supplicant.service"};
    }
    return {ExitCode::noStack, what, "systemd does not answer on the system bus",
            "busctl status org.freedesktop.systemd1"};
}

bool isUnknown(const Snapshot& now, const LibraryLog::Hints& hints) {
    return !now.running && (hints.noBus || (!hints.unitFound && !hints.systemdError.empty()));
}

bool isUnitMissing(const LibraryLog::Hints& hints) {
    return hints.systemdError == "org.freedesktop.systemd1.NoSuchUnit";
}

}  // namespace kaz::ctl
