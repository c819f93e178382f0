#pragma once

#include <string>
#include <utility>
#include <vector>

namespace kaz::bench {

// The value below which the share `part` (0 to 1) of the samples lies. There must be samples.
double percentile(std::vector<double> samples, double part);

// What the samples come to: the median, and the quartiles as a measure of how far to trust it.
struct Spread {
    double median = 0;
    double lower = 0;
    double upper = 0;
};
Spread spreadOf(const std::vector<double>& samples);

// Prints one figure as a line of JSON on standard output, which is how a benchmark reports to bench/run.
// Names must need no escaping.
using Values = std::vector<std::pair<std::string, double>>;
void report(const std::string& benchmark, const std::string& who, const Values& values);

}  // namespace kaz::bench
