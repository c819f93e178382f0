/// @file
/// The gauges of this process. They live as long as the process.
///
/// If the environment variable KAZ_METRICS_FILE names a file when the first gauge is created, this library writes all
/// gauges to it in the Prometheus text format, for a textfile collector. It writes soon after a report, at most once
/// per second, and when the process ends by exit() or a return from main(). For each gauge the file has its last value,
/// if there is one, and the number of its reports, as a counter with "_reports_total" appended to the name. Bytes that
/// Prometheus does not allow in names become "_". The file is replaced as a whole, and its folder must exist. Only the
/// first of several failures in a row is logged, at warning level. Programs that run with raised privileges ignore the
/// variable.
///
/// Without the variable nothing is written, and this library starts no thread.
///
/// A child made by fork() without exec() may report to its gauges. Once the parent has reported, only the
/// parent writes the file. createGauge takes a lock, so do not call it in the child of a process with several
/// threads.
#pragma once

#include <kaz/metrics/sample.h>

#include <memory>
#include <string>
#include <vector>

namespace kaz::metrics_reporting {

/// One metric whose value is the last reported one. Any thread may report at any time, also while static
/// objects are destroyed.
class [[gnu::visibility("default")]] Gauge {
  public:
    virtual ~Gauge();

    /// Takes a few atomic operations. Neither blocks nor accesses a file.
    virtual void set(double value) = 0;

    Gauge(const Gauge&) = delete;
    Gauge& operator=(const Gauge&) = delete;
    Gauge(Gauge &&) = delete;
    Gauge& operator=(Gauge&&) = delete;

  protected:
    Gauge() = default;
};

/// Creates the gauges of this process. All factories share one registry: both functions return the existing
/// gauge of a name. Callable from any thread.
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

    /// Every gauge of this process, in the order of creation. The samples contain all reports made before
    /// this call. A concurrent report may already show in the value, in the count, in both or in neither.
    static std::vector<Sample> snapshot();
};

}  // namespace kaz::metrics_reporting
