#include "bench/measuring/figures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace kaz::bench {

double percentile(std::vector<double> samples, double part) {
    const auto rank = static_cast<std::ptrdiff_t>(std::floor(part * static_cast<double>(samples.size() - 1)));
    std::nth_element(samples.begin(), samples.begin() + rank, samples.end());
    return samples[static_cast<std::size_t>(rank)];
}

Spread spreadOf(const std::vector<double>& samples) {
    return {percentile(samples, 0.5), percentile(samples, 0.25), percentile(samples, 0.75)};
}

void report(const std::string& benchmark, const std::string& who, const Values& values) {
    std::printf(R"({"benchmark": "%s", "who": "%s")", benchmark.c_str(), who.c_str());
    for (const auto& [name, value] : values) {
        std::printf(R"(, "%s": %.6g)", name.c_str(), value);
    }
    std::printf("}\n");
    std::fflush(stdout);
}

}  // namespace kaz::bench
