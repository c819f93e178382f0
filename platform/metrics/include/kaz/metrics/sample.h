#pragma once

#include <cstdint>
#include <string>

namespace kaz::metrics_reporting {

/// What was reported to one gauge up to a moment.
struct Sample {
    std::string name;           ///< of the gauge
    double value = 0;           ///< the last value; 0 before the first report
    std::uint64_t reports = 0;  ///< the number of reports

    friend bool operator==(const Sample&, const Sample&) = default;
};

}  // namespace kaz::metrics_reporting
