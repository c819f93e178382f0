#include <kaz/metrics/metrics_reporter_factory.h>

#include "platform/metrics/gauge_registry.h"

namespace kaz::metrics_reporting {

Gauge::~Gauge() = default;

MetricsReporterFactory::MetricsReporterFactory() = default;

MetricsReporterFactory::~MetricsReporterFactory() = default;

std::shared_ptr<Gauge> MetricsReporterFactory::createGauge(const std::string& name) {
    return GaugeRegistry::instance().gauge(name);
}

std::shared_ptr<Gauge> MetricsReporterFactory::createSampledGauge(const std::string& name) {
    return GaugeRegistry::instance().gauge(name);
}

std::vector<Sample> MetricsReporterFactory::snapshot() {
    return GaugeRegistry::instance().snapshot();
}

}  // namespace kaz::metrics_reporting
