#pragma once

#include <kaz/metrics/metrics_reporter_factory.h>
#include <wifi/types.h>

#include <memory>

namespace kaz::wifi {

// The five gauges about the connection. Each outcome is reported as 1.0, and the metrics service adds them
// up. For the loop thread only.
class ConnectionMetrics {
  public:
    ConnectionMetrics();

    // The published state changes from `previous` to `next`.
    void reportChange(const ConnectionInfo& previous, const ConnectionInfo& next);

    // A connection reached `connectingIP`.
    void reportSuccess();

  private:
    void reportFailure();

    using GaugePtr = std::shared_ptr<metrics_reporting::Gauge>;

    std::shared_ptr<metrics_reporting::MetricsReporterFactory> factory_;
    GaugePtr connected_;
    GaugePtr signal_;
    GaugePtr attemptSuccess_;
    GaugePtr attemptFail_;
    GaugePtr attemptTotal_;
};

}  // namespace kaz::wifi
