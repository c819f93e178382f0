// Stands in for the metrics library: a program that links this reports nowhere, and can ask what was reported
// in which order. Any thread may report and ask.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace kaz::test {

struct GaugeReport {
    std::string name;
    double value = 0;

    friend bool operator==(const GaugeReport&, const GaugeReport&) = default;
};

std::ostream& operator<<(std::ostream& out, const GaugeReport& report);

// All reports since this was last called.
std::vector<GaugeReport> takeGaugeReports();

// All creations since this was last called, as "createGauge(name)" and "createSampledGauge(name)".
std::vector<std::string> takeGaugeCreations();

}  // namespace kaz::test
