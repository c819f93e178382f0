#include "report/report.h"

#include <fmt/format.h>
#include <sys/utsname.h>

#include <algorithm>
#include <filesystem>

#include "inspection/text_file.h"
#include "report/journal.h"
#include "report/tokens.h"

namespace kaz::report {
namespace {

using inspection::Facts;
using inspection::Link;
using inspection::Network;

std::string versions(const std::string& version) {
    utsname kernel{};
    ::uname(&kernel);
    const std::string system = inspection::entriesOf(inspection::textOr("/etc/os-release"))["PRETTY_NAME"];
    return fmt::format("# Versions\nkazwifictl {}\nkernel {} {}\nsystem {}\n", version, kernel.release,
                       kernel.machine, system);
}

std::string findingsText(const std::vector<doctor::Finding>& findings, Tokens& tokens) {
    std::string text = "\n# Findings\n";
    for (const doctor::Finding& each : findings) {
        text += fmt::format("{:<14}{:<15}{}", nameOf(each.verdict), nameOf(each.link),
                            tokens.redacted(each.what));
        for (const std::string& ssid : each.ssids) {
            text += ' ' + tokens.ofSsid(ssid);
        }
        text += '\n';
    }
    return text;
}

template <typename Value>
std::string textOf(const inspection::Fact<Value>& fact) {
    return fact.isKnown() ? fmt::format("{}", *fact) : fact.isAbsent() ? "none" : "unknown: " + fact.why();
}

std::string networkText(const Network& network, Tokens& tokens) {
    return fmt::format(
        "    network {}{}{}{}{}{}\n", network.ssid ? tokens.ofSsid(*network.ssid) : "without a name",
        network.disabled ? ", disabled" : "", network.hasKey ? ", key" : "", network.usesSae ? ", sae" : "",
        network.isEnterprise ? ", enterprise" : "", network.verifiesServer ? ", ca" : "");
}

std::string states(const Facts& facts, Tokens& tokens) {
    std::string text = "\n# States\n";
    text += facts.unit.isKnown() ? fmt::format("unit {} {}, result {}, type {}\n", facts.unit->loadState,
                                               facts.unit->activeState, facts.unit->result, facts.unit->type)
                                 : "unit unknown\n";
    text += "choice " + textOf(facts.choiceFile.choice) + '\n';
    text += "networkd " + textOf(facts.onlineState) + "\ncountry " + textOf(facts.country) + '\n';
    if (!facts.supplicant.isKnown()) {
        return text + "wpa_supplicant does not answer\n";
    }
    for (const auto& each : facts.supplicant->interfaces) {
        text += fmt::format("wpa_supplicant {} {}\n", each.name, each.state);
        if (each.networks.isKnown()) {
            for (const Network& network : *each.networks) {
                text += networkText(network, tokens);
            }
        }
    }
    return text;
}

std::string counters(const Facts& facts) {
    std::string text = "\n# Counters\n";
    for (const Link& link : facts.links) {
        if (!link.isWireless) {
            continue;
        }
        text += fmt::format("{} {}\n", link.name, link.isUp ? "up" : "down");
        const std::filesystem::path folder = "/sys/class/net/" + link.name + "/statistics";
        for (const std::string& name : inspection::namesIn(folder)) {
            text += fmt::format("    {} {}\n", name, inspection::firstLineOf(folder / name));
        }
    }
    return text;
}

void know(Tokens& tokens, const std::vector<Network>& networks) {
    for (const Network& each : networks) {
        if (each.ssid) {
            tokens.know(*each.ssid);
        }
    }
}

}  // namespace

std::string reportOf(const Facts& facts, const std::vector<doctor::Finding>& findings,
                     const std::string& version, const std::vector<std::string>& log) {
    Tokens tokens;
    if (facts.supplicantFile.isKnown() && facts.supplicantFile->settings.isKnown()) {
        know(tokens, facts.supplicantFile->settings->networks);
    }
    if (facts.supplicant.isKnown()) {
        for (const auto& each : facts.supplicant->interfaces) {
            know(tokens, each.networks.isKnown() ? *each.networks : std::vector<Network>());
        }
    }
    std::string text =
        versions(version) + findingsText(findings, tokens) + states(facts, tokens) + counters(facts);
    text += "\n# Log\n";
    for (const std::string& line : log) {
        constexpr std::size_t timeSize = sizeof "2026-11-23 05:00:00";
        text += line.substr(0, timeSize) +
                tokens.redacted(std::string_view(line).substr(std::min(timeSize, line.size()))) + '\n';
    }
    return text;
}

std::vector<std::string> lastLog() {
    constexpr std::size_t most = 300;
    auto records = lastRecords({"wpa_supplicant.service", "systemd-networkd.service"}, most);
    return records.isKnown() ? records.take() : std::vector<std::string>();
}

}  // namespace kaz::report
