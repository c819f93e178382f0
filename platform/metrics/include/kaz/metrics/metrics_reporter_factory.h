/// @file
/// The gauges of this process. They live as long as the process does.
///
/// When the environment variable KAZ_METRICS_FILE names a file at the time the first gauge is created, all
/// gauges are written to it in the Prometheus text format, for a textfile collector: soon after a report, at
/// most once a second, and once more when the process exits through exit() or a return from main(). For each
/// gauge there are its last value, unless nothing was reported yet, and the number of its reports, as a
/// counter with "_reports_total" appended to the name. Bytes that Prometheus knows no name with become "_".
/// The file is replaced whole, its folder must exist; what goes wrong is logged at warning level, once until
/// it goes well again. (Programs that run with raised privileges ignore the variable.)
///
/// Without the variable nothing is written, and this library starts no thread.
///
/// A child made by fork() without exec() may go on reporting to its gauges, but once its parent has reported
/// anything the file is the parent's alone. Like everything that takes a lock, createGauge is not to be called
/// in the child of a process that has several threads.
#pragma once

#include <kaz/metrics/sample.h>

#include <memory>
#include <string>
#include <vector>

namespace kaz::metrics_reporting {

/// One metric of which the last reported value counts. Any thread may report, at any time, also while static
/// objects are destroyed.
class [[gnu::visibility("default")]] Gauge {
  public:
    virtual ~Gauge();

    /// Costs a few atomic operations. Neither blocks nor touches a file.
    virtual void set(double value) = 0;

    Gauge(const Gauge&) = delete;
    Gauge& operator=(const Gauge&) = delete;
    Gauge(Gauge &&) = delete;
    Gauge& operator=(Gauge&&) = delete;

  protected:
    Gauge() = default;
};

/// Hands out the gauges of this process. All factories share one registry: asking twice for a name gives the
/// same gauge, whichever way. Any thread may ask.
class [[gnu::visibility("default")]] MetricsReporterFactory {
  public:
    MetricsReporterFactory();
    ~MetricsReporterFactory();
    MetricsReporterFactory(const MetricsReporterFactory&) = delete;
    MetricsReporterFactory& operator=(const MetricsReporterFactory&) = delete;
    MetricsReporterFactory(MetricsReporterFactory &&) = delete;
    MetricsReporterFactory& operator=(MetricsReporterFactory&&) = delete;

    /// A gauge for a value that changes by events.
    std::shared_ptr<Gauge> createGauge(const std::string& name);

    /// A gauge for a value that is measured from time to time.
    std::shared_ptr<Gauge> createSampledGauge(const std::string& name);

    /// Every gauge of this process, in the order of their creation. A report made before this call is in it;
    /// one made meanwhile may be in it, or only its value or its count.
    static std::vector<Sample> snapshot();
};

}  // namespace kaz::metrics_reporting
