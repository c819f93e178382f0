// Replaces the metrics library: records all reports, in order, for the test. Usable from any thread.
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

// All reports since the last call of this.
std::vector<GaugeReport> takeGaugeReports();

// All creations since the last call of this, as "createGauge(name)" and "createSampledGauge(name)".
std::vector<std::string> takeGaugeCreations();

}  // namespace kaz::test
