// The radio: its interface, what blocks it, its country, and how it sleeps.
#include <algorithm>

#include "doctor/examination.h"
#include "inspection/fact.h"

namespace kaz::doctor {
namespace {

using inspection::Facts;

void examineBlock(Examination& examination) {
    const inspection::Link* link = examination.link();
    if (link == nullptr) {
        examination.notLookedAt(Link::block, "there is no interface");
        return;
    }
    for (const inspection::RadioSwitch& each : link->switches) {
        if (each.hard) {
            examination.broken(Link::block, "a switch on the device blocks the radio of " + link->name);
        } else if (each.soft) {
            examination.broken(Link::block, "rfkill blocks the radio of " + link->name,
                               "echo 0 > " + word((each.path / "soft").string()));
        }
    }
    examination.ok(Link::block, "nothing blocks the radio of " + link->name);
}

void examineUp(Examination& examination) {
    const inspection::Link* link = examination.link();
    if (link != nullptr && !link->isUp && examination.facts().supplicant.isKnown() &&
        !examination.isBroken(Link::block)) {
        examination.broken(Link::interface, link->name + " is down",
                           "ip link set " + word(link->name) + " up");
    }
}

void examineCountry(Examination& examination) {
    const Facts& facts = examination.facts();
    const bool world = !facts.country.isKnown() || *facts.country == "00";
    if (!facts.supplicantFile.isKnown() || !facts.supplicantFile->settings.isKnown()) {
        examination.notLookedAt(Link::country, "wpa_supplicant's configuration cannot be read");
    } else if (world && !facts.supplicantFile->settings->globals.contains("country")) {
        examination.doubtful(Link::country,
                             "no country is set, so the radio leaves out channels and sends with less power",
                             "printf '\\ncountry=%s\\n' CC >> " + word(facts.supplicantFile->path.string()) +
                                 " && " + restartUnit);
    }
    if (!facts.hasRegulatoryDatabase) {
        examination.doubtful(Link::country,
                             "/lib/firmware/regulatory.db is missing, so no country has an effect",
                             "apt-get install wireless-regdb");
    }
    examination.ok(Link::country, "the country is set");
}

void examinePowerSave(Examination& examination) {
    const inspection::Link* link = examination.link();
    if (link == nullptr || link->powerSave.isUnknown()) {
        examination.notLookedAt(Link::powerSave,
                                link == nullptr ? "there is no interface" : "the kernel did not say");
        return;
    }
    if (link->powerSave.isKnown() && *link->powerSave) {
        examination.doubtful(Link::powerSave, link->name + " saves power, which delays what arrives",
                             "iw dev " + word(link->name) + " set power_save off");
    }
    examination.ok(Link::powerSave, link->name + " does not save power");
}

void examineClock(Examination& examination) {
    constexpr std::chrono::sys_days sane = std::chrono::year{2024} / 1 / 1;
    if (examination.facts().clock < sane) {
        examination.broken(Link::clock, "the clock is wrong, so no certificate is valid yet",
                           "date --set=\"$(stat --format=%y /usr/lib/os-release)\"");
    }
    examination.ok(Link::clock, "the clock is plausible");
}

}  // namespace

void examineRadio(Examination& examination) {
    const Facts& facts = examination.facts();
    const bool any = std::any_of(facts.links.begin(), facts.links.end(),
                                 [](const inspection::Link& each) { return each.isWireless; });
    if (!any && !facts.phys.empty()) {
        const std::string& phy = facts.phys.front();
        const std::string name = examination.interface().empty() ? "wlan0" : examination.interface();
        examination.broken(Link::radio, "the radio " + phy + " has no interface",
                           "iw phy " + word(phy) + " interface add " + word(name) + " type managed");
    } else if (!any) {
        examination.broken(Link::radio,
                           "the kernel has no wireless interface: the driver or its firmware is missing",
                           "journalctl --dmesg --grep='firmware|wlan|80211'");
    }
    examination.ok(Link::radio, "the kernel has a wireless interface");
    examineBlock(examination);
}

void examineSurroundings(Examination& examination) {
    examineUp(examination);
    examination.ok(Link::interface, "wpa_supplicant uses " + examination.interface());
    examineCountry(examination);
    examinePowerSave(examination);
    examineClock(examination);
}

}  // namespace kaz::doctor
