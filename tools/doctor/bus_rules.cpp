// The bus, systemd, and the rights of this user.
#include "doctor/examination.h"
#include "inspection/fact.h"

namespace kaz::doctor {
namespace {

using inspection::Facts;
using inspection::Obstacle;

void examineSystemBus(Examination& examination) {
    const Facts& facts = examination.facts();
    if (facts.busNames.isUnknown()) {
        const bool hangs = facts.busNames.is(Obstacle::noAnswer);
        const std::string remedy = facts.busAddress ? "unset DBUS_SYSTEM_BUS_ADDRESS"
                                   : hangs          ? "systemctl restart dbus.service"
                                                    : "systemctl start dbus.socket";
        examination.broken(Link::bus,
                           hangs ? "the system bus does not answer"
                                 : "the system bus cannot be reached: " + facts.busNames.why(),
                           remedy);
    } else if (facts.supplicant.is(Obstacle::notAllowed)) {
        examination.broken(
            Link::bus,
            "the policy of the system bus does not allow " + facts.userName + " to use wpa_supplicant",
            writing("/etc/dbus-1/system.d", "zz-kazwifi-" + facts.userName + ".conf",
                    {R"(<busconfig><policy user=")" + facts.userName +
                     R"("><allow send_destination="fi.w1.wpa_supplicant1"/></policy></busconfig>)"}) +
                " && systemctl reload dbus.service");
    }
    examination.ok(Link::bus, "the system bus answers, and its policy allows " + facts.userName +
                                  " to use wpa_supplicant");
}

void examineSystemd(Examination& examination) {
    const Facts& facts = examination.facts();
    if (facts.unit.is(Obstacle::noAnswer)) {
        examination.broken(Link::systemd, "systemd does not answer on the system bus",
                           "systemctl daemon-reexec");
    } else if (facts.unit.is(Obstacle::notAllowed)) {
        examination.notLookedAt(Link::systemd, "not allowed: " + facts.unit.why());
    } else if (facts.unit.isKnown()) {
        examination.ok(Link::systemd, "systemd answers on the system bus");
    } else {
        examination.broken(Link::systemd, "systemd is not on the system bus", "systemctl daemon-reexec");
    }
}

void examineRights(Examination& examination) {
    const Facts& facts = examination.facts();
    const std::string who = facts.userName + " may not start and stop " + supplicantUnit;
    if (facts.mayStartUnits.isUnknown()) {
        examination.notLookedAt(Link::rights, facts.mayStartUnits.why());
    } else if (facts.mayStartUnits.isAbsent()) {
        examination.doubtful(Link::rights, who + ": only root may, because polkit does not run");
    } else if (!*facts.mayStartUnits) {
        examination.doubtful(
            Link::rights, who,
            writing("/etc/polkit-1/rules.d", "50-kazwifi-" + facts.userName + ".rules",
                    {"polkit.addRule(function(action, subject) {",
                     R"(  if (action.id == "org.freedesktop.systemd1.manage-units" &&)",
                     R"(      action.lookup("unit") == "wpa_supplicant.service" && subject.user == ")" +
                         facts.userName + R"(") {)",
                     "    return polkit.Result.YES;", "  }", "});"}));
    }
    examination.ok(Link::rights, facts.userName + " may start and stop " + supplicantUnit);
}

}  // namespace

void examineBus(Examination& examination) {
    examineSystemBus(examination);
    if (examination.facts().busNames.isUnknown()) {
        for (const Link link : {Link::systemd, Link::rights}) {
            examination.notLookedAt(link, "the system bus cannot be used");
        }
        return;
    }
    examineSystemd(examination);
    examineRights(examination);
}

}  // namespace kaz::doctor
