#include "connection_info/connection_metrics.h"

namespace kaz::wifi {

ConnectionMetrics::ConnectionMetrics()
    : factory_(std::make_shared<metrics_reporting::MetricsReporterFactory>()),
      connected_(factory_->createGauge("quarn.wifi.connected")),
      signal_(factory_->createSampledGauge("quarn.wifi.signal-strength-dbm")),
      attemptSuccess_(factory_->createGauge("quarn.wifi.connection-attempt.success")),
      attemptFail_(factory_->createGauge("quarn.wifi.connection-attempt.fail")),
      attemptTotal_(factory_->createGauge("quarn.wifi.connection-attempt.total")) {}

void ConnectionMetrics::reportChange(const ConnectionInfo& previous, const ConnectionInfo& next) {
    connected_->set(next.status == ConnectionInfo::Status::connected ? 1.0 : 0.0);
    if (next.status > ConnectionInfo::Status::connectingWifi) {
        signal_->set(static_cast<double>(next.signal));
    }
    if (previous.status == ConnectionInfo::Status::connectingWifi &&
        next.status == ConnectionInfo::Status::disconnected) {
        reportFailure();
    }
}

void ConnectionMetrics::reportSuccess() {
    attemptSuccess_->set(1.0);
    attemptTotal_->set(1.0);
}

void ConnectionMetrics::reportFailure() {
    attemptFail_->set(1.0);
    attemptTotal_->set(1.0);
}

}  // namespace kaz::wifi
