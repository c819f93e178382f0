#pragma once

#include <cstdint>
#include <string>

namespace kaz::metrics_reporting {

/// What was reported to one gauge up to some moment.
struct Sample {
    std::string name;           ///< of the gauge
    double value = 0;           ///< the last one; 0 when there was none
    std::uint64_t reports = 0;  ///< how many there were

    friend bool operator==(const Sample&, const Sample&) = default;
};

}  // namespace kaz::metrics_reporting
