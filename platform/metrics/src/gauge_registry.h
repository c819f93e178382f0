#pragma once

#include <kaz/metrics/metrics_reporter_factory.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/non_copyable.h"

namespace kaz::metrics_reporting {

class FileWriter;

// All gauges of the process, and the file to which they are written, if there is one. Thread-safe.
class GaugeRegistry : NonCopyable {
  public:
    // The registry of this process. It is never destroyed, because gauges may be set until the process ends.
    static GaugeRegistry& instance();

    std::shared_ptr<Gauge> gauge(const std::string& name);
    std::vector<Sample> snapshot() const;

    // Writes pending reports. Later reports are not written.
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
