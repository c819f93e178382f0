#pragma once

#include <memory>
#include <string>

namespace kaz::metrics_reporting {

// One metric of which the last reported value counts. Any thread may report.
class [[gnu::visibility("default")]] Gauge {
  public:
    virtual ~Gauge();
    virtual void set(double value) = 0;

    Gauge(const Gauge&) = delete;
    Gauge& operator=(const Gauge&) = delete;
    Gauge(Gauge &&) = delete;
    Gauge& operator=(Gauge&&) = delete;

  protected:
    Gauge() = default;
};

// Hands out the gauges of this process. All factories share one registry: asking twice for a name gives the
// same gauge. Any thread may ask.
class [[gnu::visibility("default")]] MetricsReporterFactory {
  public:
    MetricsReporterFactory();
    ~MetricsReporterFactory();
    MetricsReporterFactory(const MetricsReporterFactory&) = delete;
    MetricsReporterFactory& operator=(const MetricsReporterFactory&) = delete;
    MetricsReporterFactory(MetricsReporterFactory &&) = delete;
    MetricsReporterFactory& operator=(MetricsReporterFactory&&) = delete;

    // A gauge for a value that changes by events.
    std::shared_ptr<Gauge> createGauge(const std::string& name);

    // A gauge for a value that is measured from time to time.
    std::shared_ptr<Gauge> createSampledGauge(const std::string& name);
};

}  // namespace kaz::metrics_reporting
