// The supplicant's unit: whether systemd can start it, and how it starts the supplicant.
#include <algorithm>

#include "doctor/examination.h"
#include "inspection/fact.h"

namespace kaz::doctor {
namespace {

using inspection::Facts;
using inspection::Unit;

constexpr const char* unitFolder = "/etc/systemd/system";
constexpr const char* program = "/sbin/wpa_supplicant";
constexpr const char* usualConfiguration = "/etc/wpa_supplicant/wpa_supplicant.conf";
constexpr const char* busName = "fi.w1.wpa_supplicant1";

// As in a unit's file.
std::string joined(const std::vector<std::string>& command) {
    std::string text;
    for (const std::string& each : command) {
        const char* quote = each.find(' ') == std::string::npos ? "" : "\"";
        text += text.empty() ? "" : " ";
        text += quote + each + quote;
    }
    return text;
}

// A shell line that makes the usual configuration, unless there is one.
std::string ensureConfiguration() {
    const std::string file = usualConfiguration;
    return "{ test -e " + file +
           " || ( umask 077; printf '%s\\n' ctrl_interface=/run/wpa_supplicant update_config=1 > " + file +
           " ); } && ";
}

std::string nameOr(const std::string& name) {
    return name.empty() ? "wlan0" : name;
}

void examineLoading(Examination& examination, const Unit& unit) {
    if (unit.loadState == "masked") {
        examination.broken(
            Link::unit, std::string(supplicantUnit) + " is masked",
            std::string("systemctl unmask ") + supplicantUnit + " && systemctl start " + supplicantUnit);
    } else if (unit.loadState == "not-found") {
        const std::string start = std::string("ExecStart=") + program + " -u -s -i" +
                                  nameOr(examination.interface()) + " -Dnl80211 -c " + usualConfiguration;
        examination.broken(Link::unit, std::string(supplicantUnit) + " is missing",
                           ensureConfiguration() +
                               writing(unitFolder, supplicantUnit,
                                       {"[Service]", "Type=dbus", std::string("BusName=") + busName, start}) +
                               " && systemctl daemon-reload && systemctl start " + supplicantUnit);
    } else if (unit.loadState != "loaded") {
        examination.broken(Link::unit,
                           std::string("systemd cannot load ") + supplicantUnit +
                               (unit.loadError.empty() ? "" : ": ") + unit.loadError,
                           std::string("systemd-analyze verify ") + supplicantUnit);
    } else if (unit.type != "dbus" || unit.busName != busName) {
        examination.doubtful(
            Link::unit,
            std::string(supplicantUnit) +
                " has another type than dbus, so it is active before wpa_supplicant is on the bus",
            dropIn("zz-kazwifi-type.conf", {"[Service]", "Type=dbus", std::string("BusName=") + busName}));
    }
    examination.ok(Link::unit,
                   std::string("systemd knows ") + supplicantUnit + ", and waits until it is on the bus");
}

bool hasOption(const std::vector<std::string>& command, char letter) {
    const auto options = optionsIn(command);
    return std::any_of(options.begin(), options.end(),
                       [&](const auto& each) { return each.first == letter; });
}

bool exists(const Facts& facts, const std::string& name) {
    return std::any_of(facts.links.begin(), facts.links.end(),
                       [&](const auto& each) { return each.name == name; });
}

// The unit's command with what it lacks. An interface that does not exist is replaced.
std::vector<std::string> mended(const Examination& examination, const Unit& unit) {
    const Facts& facts = examination.facts();
    const auto wireless = std::find_if(facts.links.begin(), facts.links.end(),
                                       [](const auto& each) { return each.isWireless; });
    const std::string interface = wireless == facts.links.end() ? "wlan0" : wireless->name;
    std::vector<std::string> command{unit.command.empty() ? program : unit.command.front()};
    bool hasInterface = false;
    for (const auto& [letter, value] : optionsIn(unit.command)) {
        const bool wrong = letter == 'i' && !exists(facts, value);
        hasInterface |= letter == 'i';
        command.push_back(std::string("-") + letter + (wrong ? interface : value));
    }
    if (!hasOption(unit.command, 'u')) {
        command.insert(command.begin() + 1, "-u");
    }
    if (!hasInterface) {
        command.push_back("-i" + interface);
    }
    if (!hasOption(unit.command, 'c')) {
        command.push_back(std::string("-c") + usualConfiguration);
    }
    return command;
}

void examineCommand(Examination& examination, const Unit& unit) {
    const Facts& facts = examination.facts();
    const std::string remedy =
        (hasOption(unit.command, 'c') ? "" : ensureConfiguration()) +
        dropIn("zz-kazwifi-command.conf",
               {"[Service]", "ExecStart=", "ExecStart=" + joined(mended(examination, unit))});
    const bool hasInterfaces = facts.supplicant.isKnown() && !facts.supplicant->interfaces.empty();
    const std::vector<std::string> names = interfacesIn(unit.command);
    const auto missing = std::find_if(names.begin(), names.end(),
                                      [&](const std::string& name) { return !exists(facts, name); });
    if (!hasOption(unit.command, 'u')) {
        examination.broken(Link::commandLine,
                           "the unit starts wpa_supplicant without -u, so it is not on the bus", remedy);
    } else if (names.empty() && !hasInterfaces) {
        examination.broken(Link::commandLine,
                           "the unit starts wpa_supplicant without -i, so it has no interface", remedy);
    } else if (missing != names.end() && !examination.isBroken(Link::radio)) {
        examination.broken(
            Link::commandLine,
            "the unit starts wpa_supplicant with the interface " + *missing + ", which does not exist",
            remedy);
    } else if (!hasOption(unit.command, 'c') && !hasInterfaces) {
        examination.doubtful(Link::commandLine,
                             "the unit starts wpa_supplicant without -c, so it cannot save a network",
                             remedy);
    }
    examination.ok(Link::commandLine, "the unit starts wpa_supplicant on the bus, with an interface");
}

}  // namespace

void examineUnit(Examination& examination) {
    const Facts& facts = examination.facts();
    if (!facts.unit.isKnown()) {
        for (const Link link : {Link::unit, Link::commandLine}) {
            examination.notLookedAt(link, "systemd did not tell");
        }
        return;
    }
    examineLoading(examination, *facts.unit);
    if (facts.unit->loadState == "loaded") {
        examineCommand(examination, *facts.unit);
    } else {
        examination.notLookedAt(Link::commandLine, "systemd has not loaded the unit");
    }
}

}  // namespace kaz::doctor
