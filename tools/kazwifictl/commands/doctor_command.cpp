#include <fmt/format.h>

#include <algorithm>

#include "doctor/diagnose.h"
#include "inspection/inspect.h"
#include "kazwifictl/commands/commands.h"
#include "kazwifictl/output/documents.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {

using doctor::Finding;
using doctor::Verdict;

namespace {

Json findingJson(const Finding& finding) {
    Json networks = Json::array();
    for (const std::string& ssid : finding.ssids) {
        networks.push_back(ssidMembers(ssid));
    }
    return {{"link", nameOf(finding.link)},
            {"verdict", nameOf(finding.verdict)},
            {"what", finding.what},
            {"remedy", finding.remedy.empty() ? Json() : Json(finding.remedy)},
            {"networks", networks}};
}

std::string verdictText(Verdict verdict, const Output& output) {
    const std::string text =
        fmt::format("{:<14}", verdict == Verdict::notLookedAt ? "not looked at" : nameOf(verdict));
    return verdict == Verdict::broken ? output.style().bad(text) : text;
}

std::string findingText(const Finding& finding, const Output& output) {
    std::string text = fmt::format("{}{:<15}{}", verdictText(finding.verdict, output), nameOf(finding.link),
                                   harmless(finding.what, output.terminal().utf8));
    for (std::size_t i = 0; i < finding.ssids.size(); ++i) {
        text += (i == 0 ? ": " : ", ") + output.name(finding.ssids[i]);
    }
    text += '\n';
    if (!finding.remedy.empty()) {
        text += "    " + output.style().bold(harmless(finding.remedy, output.terminal().utf8)) + '\n';
    }
    return text;
}

// The good links on one line, since there are many.
std::string goodText(const std::vector<Finding>& findings, const Output& output) {
    std::string names;
    for (const Finding& each : findings) {
        if (each.verdict == Verdict::ok) {
            names += (names.empty() ? "" : ", ") + std::string(nameOf(each.link));
        }
    }
    return names.empty() ? "" : output.style().good(fmt::format("{:<14}", "ok")) + names + '\n';
}

Failure ill(const Finding& worst) {
    return {ExitCode::failed, "Wi-Fi cannot work", worst.what, worst.remedy};
}

}  // namespace

void checkNotSimulated(const Options& options, const std::string& what) {
    if (options.simulate) {
        throw CommandFailed({ExitCode::usage, what,
                             "a simulated device has no radio, no processes and no files of its own",
                             "no --simulate"});
    }
}

Report findFaults(const Options& options, Workspace& /*place*/, Output& output) {
    checkNotSimulated(options, "cannot look for faults");
    const auto began = Clock::now();
    const std::vector<Finding> findings = doctor::diagnose(inspection::inspect());
    Report report;
    report.members["findings"] = Json::array();
    for (const Finding& each : findings) {
        report.members["findings"].push_back(findingJson(each));
        report.text += each.verdict == Verdict::ok ? "" : findingText(each, output);
    }
    report.text += goodText(findings, output);
    report.members["ms"] = inMilliseconds(Clock::now() - began);
    if (!isHealthy(findings)) {
        report.failure = ill(findings.front());
    }
    return report;
}

}  // namespace kaz::ctl
