// networkd, which gets an address.
#include <algorithm>

#include "doctor/examination.h"
#include "inspection/fact.h"

namespace kaz::doctor {
namespace {

using inspection::Facts;
using inspection::ManagedLink;
using inspection::Obstacle;

constexpr const char* folder = "/etc/systemd/network";
constexpr const char* reload = " && networkctl reload";

std::string networkDropIn(const ManagedLink& link, const std::string& file,
                          const std::vector<std::string>& lines) {
    return writing(std::string(folder) + '/' + link.networkFile.filename().string() + ".d", file, lines) +
           reload;
}

std::string settingOr(const ManagedLink& link, const std::string& key, const std::string& otherwise) {
    const auto found = link.settings.find(key);
    return found == link.settings.end() ? otherwise : found->second;
}

bool isOneOf(const std::string& text, std::initializer_list<const char*> values) {
    return std::any_of(values.begin(), values.end(), [&](const char* each) { return text == each; });
}

void examineFile(Examination& examination, const std::string& name, const ManagedLink& link) {
    if (!link.requiredForOnline) {
        examination.broken(
            Link::addresses, name + " has RequiredForOnline=no, so the device is never online",
            networkDropIn(link, "zz-kazwifi-online.conf", {"[Link]", "RequiredForOnline=yes"}));
    }
    const bool routable = settingOr(link, "Link/RequiredForOnline", "").starts_with("routable");
    if (!isOneOf(settingOr(link, "Network/LinkLocalAddressing", "ipv6"), {"no", "false", "off", "0"}) &&
        !routable) {
        examination.doubtful(
            Link::addresses,
            name + " has link-local addresses, so the device is online before it has an address",
            networkDropIn(link, "zz-kazwifi-local.conf", {"[Network]", "LinkLocalAddressing=no"}));
    }
    if (isOneOf(settingOr(link, "Network/DHCP", "no"), {"no", "false", "off", "0", "none"}) &&
        !link.settings.contains("Network/Address") && !link.settings.contains("Address/Address")) {
        examination.broken(Link::addresses, name + " gets no address: it has neither DHCP nor an address",
                           networkDropIn(link, "zz-kazwifi-dhcp.conf", {"[Network]", "DHCP=ipv4"}));
    }
}

// Another interface that must be online, and is not, keeps the whole device from being online.
void examineOthers(Examination& examination, const std::string& name) {
    for (const inspection::Link& each : examination.facts().links) {
        if (each.name != name && each.managed.isKnown() && !each.managed->networkFile.empty() &&
            each.managed->requiredForOnline && each.managed->onlineState != "online") {
            examination.broken(
                Link::addresses,
                "the device is online only when " + each.name + " is online too, which it is not",
                networkDropIn(*each.managed, "zz-kazwifi-online.conf", {"[Link]", "RequiredForOnline=no"}));
        }
    }
}

void examineNetworkd(Examination& examination) {
    const Facts& facts = examination.facts();
    const inspection::Link* link = examination.link();
    if (facts.busNames.isUnknown()) {
        examination.notLookedAt(Link::networkd, "the system bus cannot be used");
    } else if (facts.onlineState.isAbsent()) {
        examination.broken(Link::networkd, "systemd-networkd does not run, so nobody gets an address",
                           "systemctl start systemd-networkd.service");
    } else if (facts.onlineState.is(Obstacle::noAnswer)) {
        examination.broken(Link::networkd, "systemd-networkd hangs: it does not answer",
                           "systemctl kill --signal=KILL systemd-networkd.service && systemctl restart "
                           "systemd-networkd.service");
    } else if (facts.onlineState.isUnknown()) {
        examination.notLookedAt(Link::networkd, facts.onlineState.why());
    } else if (link == nullptr) {
        examination.notLookedAt(Link::networkd, "there is no interface");
    } else if (link->managed.isAbsent() || (link->managed.isKnown() && link->managed->networkFile.empty())) {
        examination.broken(Link::networkd,
                           "systemd-networkd does not manage " + link->name + ": no file names it",
                           writing(folder, "50-kazwifi-" + link->name + ".network",
                                   {"[Match]", "Name=" + link->name, "[Network]", "DHCP=ipv4",
                                    "LinkLocalAddressing=no", "IPv6AcceptRA=no"}) +
                               reload);
    }
    examination.ok(Link::networkd, "systemd-networkd manages the interface");
}

}  // namespace

void examineAddresses(Examination& examination) {
    examineNetworkd(examination);
    const inspection::Link* link = examination.link();
    if (link == nullptr || !link->managed.isKnown() || link->managed->networkFile.empty() ||
        examination.isBroken(Link::networkd)) {
        examination.notLookedAt(Link::addresses, "systemd-networkd does not manage the interface");
        return;
    }
    examineFile(examination, link->name, *link->managed);
    examineOthers(examination, link->name);
    examination.ok(Link::addresses, "the device is online when it has an address");
}

}  // namespace kaz::doctor
