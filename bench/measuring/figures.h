#pragma once

#include <string>
#include <utility>
#include <vector>

namespace kaz::bench {

// The quantile `part` (0 to 1) of the samples. There must be samples.
double percentile(std::vector<double> samples, double part);

// The median of the samples, and the quartiles as a measure of its reliability.
struct Spread {
    double median = 0;
    double lower = 0;
    double upper = 0;
};
Spread spreadOf(const std::vector<double>& samples);

// Prints one figure for bench/run, as a line of JSON on standard output. Names must need no escaping.
using Values = std::vector<std::pair<std::string, double>>;
void report(const std::string& benchmark, const std::string& who, const Values& values);

}  // namespace kaz::bench
