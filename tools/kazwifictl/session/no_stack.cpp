#include "kazwifictl/session/no_stack.h"

#include <chrono>

#include "inspection/bus_facts.h"
#include "inspection/facts.h"

namespace kaz::ctl {
namespace {

using wifi::FailureReason;
using Place = wifi::StackTrouble::Place;

constexpr const char* readUnit = "systemctl status wpa_supplicant.service";
constexpr const char* askSystemd = "busctl status org.freedesktop.systemd1";

// How long systemd and the supplicant may take to answer before they are called silent.
constexpr std::chrono::milliseconds patience{1000};

StackTrouble missingUnit() {
    return {"the unit wpa_supplicant.service does not exist", "installing wpa_supplicant"};
}

StackTrouble maskedUnit() {
    return {"the unit wpa_supplicant.service is masked", "systemctl unmask wpa_supplicant.service"};
}

// Why the unit is not active. The library reports only that it is not, so this asks systemd.
StackTrouble inactiveUnit() {
    inspection::Facts facts;
    inspection::readBus(facts, patience);
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

StackTrouble noBus() {
    return {"the system bus cannot be reached", "systemctl status dbus.service"};
}

StackTrouble silentSystemd() {
    return {"systemd does not answer on the system bus", askSystemd};
}

StackTrouble silentSupplicant() {
    return {"wpa_supplicant does not answer", "systemctl restart wpa_supplicant.service"};
}

// The unit is active, but the supplicant does not list its interfaces.
StackTrouble supplicantTrouble(FailureReason reason) {
    switch (reason) {
        case FailureReason::denied:
            return {"the policy of the system bus does not let this user talk to wpa_supplicant",
                    "the command as root, or a user of the group that the policy names"};
        case FailureReason::notOnBus:
            return {"wpa_supplicant runs, but is not on the system bus", "starting wpa_supplicant with -u"};
        case FailureReason::noAnswer:
            return silentSupplicant();
        case FailureReason::noBus:
            return noBus();
        case FailureReason::none:
        case FailureReason::unknown:
        case FailureReason::unitMissing:
        case FailureReason::unitMasked:
        case FailureReason::refused:
            break;
    }
    return inactiveUnit();
}

}  // namespace

StackTrouble unitTrouble(FailureReason reason) {
    switch (reason) {
        case FailureReason::noBus:
            return noBus();
        case FailureReason::unitMissing:
            return missingUnit();
        case FailureReason::unitMasked:
            return maskedUnit();
        case FailureReason::denied:
            return {"systemd does not let this user start or stop wpa_supplicant", "the command as root"};
        case FailureReason::notOnBus:
            return {"systemd is not on the system bus", askSystemd};
        case FailureReason::noAnswer:
            return silentSystemd();
        case FailureReason::none:
        case FailureReason::unknown:
        case FailureReason::refused:
            break;
    }
    return {"systemd refused it", readUnit};
}

StackTrouble stackTrouble(const Snapshot& now) {
    const auto [place, reason] = now.connection.stack;
    if (place == Place::bus) {
        return noBus();
    }
    if (isUnknown(now)) {
        return reason == FailureReason::denied
                   ? StackTrouble{"systemd does not tell this user whether wpa_supplicant runs",
                                  "the command as root"}
                   : unitTrouble(reason);
    }
    if (!now.enabled) {
        return {"Wi-Fi is switched off", "kazwifictl on"};
    }
    if (place == Place::interface) {
        return {"wpa_supplicant has no Wi-Fi interface",
                "ip link, then starting wpa_supplicant with -i INTERFACE"};
    }
    return place == Place::supplicant ? supplicantTrouble(reason) : inactiveUnit();
}

Failure noStack(const std::string& what, const Snapshot& now) {
    const StackTrouble trouble = stackTrouble(now);
    return {ExitCode::noStack, what, trouble.why, trouble.advice};
}

// The library still waits for one of them, so this asks both.
Failure noAnswer(const std::string& what) {
    inspection::Facts facts;
    inspection::readBus(facts, patience);
    const StackTrouble trouble = facts.unit.isKnown() ? silentSupplicant() : silentSystemd();
    return {ExitCode::noStack, what, trouble.why, trouble.advice};
}

bool isUnknown(const Snapshot& now) {
    const Place place = now.connection.stack.place;
    return !now.running && (place == Place::bus || place == Place::systemd);
}

}  // namespace kaz::ctl
