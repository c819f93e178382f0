#pragma once

#include <kaz/metrics/metrics_reporter_factory.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kaz::metrics_reporting {

class FileWriter;

// All gauges of the process, and the file they are written to, if there is one. Any thread.
class GaugeRegistry {
  public:
    // The one of this process. It is never destroyed, because gauges may be set until the very end.
    static GaugeRegistry& instance();

    GaugeRegistry(const GaugeRegistry&) = delete;
    GaugeRegistry& operator=(const GaugeRegistry&) = delete;
    GaugeRegistry(GaugeRegistry&&) = delete;
    GaugeRegistry& operator=(GaugeRegistry&&) = delete;

    std::shared_ptr<Gauge> gauge(const std::string& name);
    std::vector<Sample> snapshot() const;

    // Writes what was reported last. Nothing is written afterwards.
    void close() noexcept;

  private:
    class CountingGauge;

    GaugeRegistry();
    ~GaugeRegistry();

    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<CountingGauge>> gauges_;
    std::unique_ptr<FileWriter> writer_;
};

}  // namespace kaz::metrics_reporting
