#pragma once

#include <kaz/metrics/metrics_reporter_factory.h>
#include <wifi/types.h>

#include <memory>

namespace kaz::wifi {

// The five gauges about the connection. An outcome is reported as 1.0 each time it happens; adding up is the
// metrics service's business. Loop thread only.
class ConnectionMetrics {
  public:
    ConnectionMetrics();

    // The published state goes from `previous` to `next`, which differs.
    void reportChange(const ConnectionInfo& previous, const ConnectionInfo& next);

    // An attempt reached the set-up of the address.
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
