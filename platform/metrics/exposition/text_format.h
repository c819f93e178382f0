#pragma once

#include <kaz/metrics/sample.h>

#include <string>
#include <vector>

namespace kaz::metrics_reporting {

// The samples as a page of the Prometheus text format. Gauges whose names differ only in what Prometheus does
// not allow are told apart by a number, given in the order of the samples: a page with one name twice would
// be refused whole.
std::string toPrometheusText(const std::vector<Sample>& samples);

}  // namespace kaz::metrics_reporting
