// Who manages the interface, whether the supplicant runs, and whether it answers.
#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "doctor/examination.h"
#include "inspection/fact.h"

namespace kaz::doctor {
namespace {

using inspection::Facts;
using inspection::Obstacle;
using inspection::Process;

// Whether a supplicant has an interface, or may be given every one.
bool mayUse(const Process& process, const std::string& interface) {
    const std::vector<std::string> names = interfacesIn(process.command);
    return names.empty() || interface.empty() ||
           std::find(names.begin(), names.end(), interface) != names.end();
}

void examineSupplicants(Examination& examination) {
    const Facts& facts = examination.facts();
    for (const Process& each : facts.supplicants) {
        if (facts.unit.isKnown() && static_cast<std::uint32_t>(each.pid) != facts.unit->mainPid &&
            mayUse(each, examination.interface())) {
            examination.broken(Link::rivals,
                               fmt::format("process {} is a wpa_supplicant that {} has not started", each.pid,
                                           supplicantUnit),
                               fmt::format("kill {} && {}", each.pid, restartUnit));
        }
    }
}

void examineRival(Examination& examination, const Process& rival) {
    const std::string interface = word(examination.interface());
    if (rival.name == "iwd") {
        examination.broken(Link::rivals, "iwd runs, which takes the interface from wpa_supplicant",
                           std::string("systemctl disable --now iwd.service && ") + restartUnit);
    } else if (rival.name == "NetworkManager") {
        examination.doubtful(Link::rivals, "NetworkManager runs, which may control " + interface + " too",
                             "nmcli device set " + interface + " managed no");
    } else {
        const std::string unit = rival.name == "connmand" ? "connman" : rival.name;
        examination.doubtful(Link::rivals, rival.name + " runs, which may control " + interface + " too",
                             "systemctl disable --now " + unit + ".service");
    }
}

void examineActive(Examination& examination) {
    const Facts& facts = examination.facts();
    const bool explained = examination.isAnyBroken(
        {Link::choice, Link::radio, Link::unit, Link::commandLine, Link::configuration, Link::rivals});
    if (!facts.unit.isKnown()) {
        examination.notLookedAt(Link::running, "systemd did not tell");
        return;
    }
    const std::string& state = facts.unit->activeState;
    const std::string unit = supplicantUnit;
    if (state == "active" || state == "reloading") {
        examination.ok(Link::running, unit + " runs");
    } else if (explained) {
        examination.notLookedAt(Link::running, unit + " does not run, as a fault above explains");
    } else if (state == "failed") {
        examination.broken(Link::running, unit + " has failed: " + facts.unit->result,
                           "systemctl reset-failed " + unit + " && systemctl start " + unit);
    } else if (state == "inactive") {
        examination.broken(Link::running, unit + " does not run", "systemctl start " + unit);
    } else {
        examination.doubtful(Link::running, unit + " is " + state,
                             "journalctl --unit " + unit + " --lines 20");
    }
}

void examineAnswer(Examination& examination) {
    const Facts& facts = examination.facts();
    const auto stopped = std::find_if(facts.supplicants.begin(), facts.supplicants.end(),
                                      [](const Process& each) { return each.isStopped; });
    if (facts.supplicant.isKnown()) {
        examination.ok(Link::supplicant, "wpa_supplicant answers on the system bus");
    } else if (examination.isAnyBroken({Link::bus, Link::commandLine, Link::rivals}) ||
               !facts.unit.isKnown() || facts.unit->activeState != "active") {
        examination.notLookedAt(Link::supplicant, "wpa_supplicant cannot be asked");
    } else if (facts.supplicant.isAbsent()) {
        examination.broken(Link::supplicant, "wpa_supplicant runs, but it is not on the system bus",
                           restartUnit);
    } else if (facts.supplicant.is(Obstacle::noAnswer) && stopped != facts.supplicants.end()) {
        examination.broken(Link::supplicant, "a signal or a debugger has stopped wpa_supplicant",
                           fmt::format("kill -CONT {}", stopped->pid));
    } else if (facts.supplicant.is(Obstacle::noAnswer)) {
        examination.broken(
            Link::supplicant, "wpa_supplicant hangs: it does not answer",
            fmt::format("systemctl kill --signal=KILL {0} && systemctl restart {0}", supplicantUnit));
    } else {
        examination.broken(Link::supplicant,
                           "wpa_supplicant answers with an error: " + facts.supplicant.why(), restartUnit);
    }
}

void examineInterfaces(Examination& examination) {
    const Facts& facts = examination.facts();
    if (!facts.supplicant.isKnown()) {
        examination.notLookedAt(Link::interface, "wpa_supplicant cannot be asked");
        return;
    }
    const auto& interfaces = facts.supplicant->interfaces;
    if (interfaces.empty()) {
        if (!examination.isAnyBroken({Link::radio, Link::commandLine})) {
            examination.broken(Link::interface, "wpa_supplicant has no interface", restartUnit);
        }
        return;
    }
    const std::vector<std::string> named =
        facts.unit.isKnown() ? interfacesIn(facts.unit->command) : std::vector<std::string>();
    const auto isNamed = [&](const auto& each) {
        return std::find(named.begin(), named.end(), each.name) != named.end();
    };
    const auto extra = std::find_if_not(interfaces.begin(), interfaces.end(), isNamed);
    if (interfaces.size() > 1 && !named.empty() && extra != interfaces.end()) {
        const std::string remedy =
            "busctl call fi.w1.wpa_supplicant1 /fi/w1/wpa_supplicant1 fi.w1.wpa_supplicant1 RemoveInterface "
            "o " +
            extra->path;
        if (extra == interfaces.begin()) {
            examination.broken(
                Link::interface,
                fmt::format("a program that starts now uses {}, which the unit does not name, since "
                            "wpa_supplicant lists it first",
                            extra->name),
                remedy);
        } else {
            examination.doubtful(
                Link::interface,
                fmt::format("wpa_supplicant also has {}, which the unit does not name", extra->name), remedy);
        }
    }
}

}  // namespace

void examineRivals(Examination& examination) {
    const Facts& facts = examination.facts();
    if (facts.unit.isUnknown()) {
        examination.notLookedAt(Link::rivals, "which wpa_supplicant the unit has started is not known");
    } else {
        examineSupplicants(examination);
    }
    for (const Process& rival : facts.rivals) {
        examineRival(examination, rival);
    }
    examination.ok(Link::rivals, "no other program manages the interface");
}

void examineSupplicant(Examination& examination) {
    examineActive(examination);
    examineAnswer(examination);
    examineInterfaces(examination);
}

}  // namespace kaz::doctor
