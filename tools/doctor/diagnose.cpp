#include "doctor/diagnose.h"

#include <algorithm>
#include <array>
#include <utility>

#include "doctor/examination.h"

namespace kaz::doctor {

std::vector<Finding> diagnose(const inspection::Facts& facts) {
    Examination examination(facts);
    examineBus(examination);
    examineChoice(examination);
    examineRadio(examination);
    examineUnit(examination);
    examineConfiguration(examination);
    examineRivals(examination);
    examineSupplicant(examination);
    examineNetworks(examination);
    examineAddresses(examination);
    examineSurroundings(examination);
    return examination.take();
}

bool isHealthy(const std::vector<Finding>& findings) {
    return std::none_of(findings.begin(), findings.end(),
                        [](const Finding& each) { return each.verdict == Verdict::broken; });
}

std::string_view nameOf(Link link) {
    constexpr std::array<std::string_view, 21> names{
        "bus",           "systemd", "rights",     "choice",     "radio",     "unit",       "command-line",
        "configuration", "rivals",  "running",    "supplicant", "block",     "interface",  "country",
        "networks",      "sae",     "enterprise", "networkd",   "addresses", "power-save", "clock"};
    return names.at(static_cast<std::size_t>(link));
}

std::string_view nameOf(Verdict verdict) {
    constexpr std::array<std::string_view, 4> names{"broken", "doubtful", "not-looked-at", "ok"};
    return names.at(static_cast<std::size_t>(verdict));
}

}  // namespace kaz::doctor
