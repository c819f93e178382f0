#pragma once

#include <kaz/metrics/sample.h>

#include <string>
#include <vector>

namespace kaz::metrics_reporting {

// Returns the samples in the Prometheus text format. If the names of two gauges differ only in bytes that
// Prometheus does not allow, the later one gets a number. Prometheus would refuse a page with a name that
// occurs twice.
std::string toPrometheusText(const std::vector<Sample>& samples);

}  // namespace kaz::metrics_reporting
