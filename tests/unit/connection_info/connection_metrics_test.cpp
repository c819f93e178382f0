#include "connection_info/connection_metrics.h"
#include "doubles/fake_metrics/fake_metrics.h"
#include "unit/connection_info/tracker_fixture.h"

#include <array>

namespace kaz::test {
namespace {

using Reports = std::vector<GaugeReport>;
using Status = ConnectionInfo::Status;

class ConnectionMetrics : public ::testing::Test {
  protected:
    ConnectionMetrics() {
        takeGaugeCreations();
        takeGaugeReports();
    }

    static ConnectionInfo info(Status status, const std::string& ssid = "Home", int signal = -52) {
        ConnectionInfo result;
        result.status = status;
        result.ssid = ssid;
        result.signal = signal;
        return result;
    }
};

TEST_F(ConnectionMetrics, FiveGaugesAreCreatedInAFixedOrder) {
    const wifi::ConnectionMetrics metrics;
    EXPECT_EQ(takeGaugeCreations(), (std::vector<std::string>{
                                        "createGauge(quarn.wifi.connected)",
                                        "createSampledGauge(quarn.wifi.signal-strength-dbm)",
                                        "createGauge(quarn.wifi.connection-attempt.success)",
                                        "createGauge(quarn.wifi.connection-attempt.fail)",
                                        "createGauge(quarn.wifi.connection-attempt.total)",
                                    }));
    EXPECT_EQ(takeGaugeReports(), Reports{});
}

TEST_F(ConnectionMetrics, EveryChangeOfStatusIsReported) {
    const GaugeReport up{"quarn.wifi.connected", 1.0};
    const GaugeReport down{"quarn.wifi.connected", 0.0};
    const GaugeReport signal{"quarn.wifi.signal-strength-dbm", -52.0};
    const GaugeReport fail{"quarn.wifi.connection-attempt.fail", 1.0};
    const GaugeReport total{"quarn.wifi.connection-attempt.total", 1.0};
    struct Row {
        Status from;
        Status to;
        Reports reports;
    };
    const std::array rows{
        Row{Status::disconnected, Status::disconnected, {down}},
        Row{Status::disconnected, Status::connectingWifi, {down}},
        Row{Status::disconnected, Status::connectingIP, {down, signal}},
        Row{Status::disconnected, Status::connected, {up, signal}},
        Row{Status::connectingWifi, Status::disconnected, {down, fail, total}},
        Row{Status::connectingWifi, Status::connectingWifi, {down}},
        Row{Status::connectingWifi, Status::connectingIP, {down, signal}},
        Row{Status::connectingWifi, Status::connected, {up, signal}},
        Row{Status::connectingIP, Status::disconnected, {down}},
        Row{Status::connectingIP, Status::connectingWifi, {down}},
        Row{Status::connectingIP, Status::connected, {up, signal}},
        Row{Status::connected, Status::disconnected, {down}},
        Row{Status::connected, Status::connectingWifi, {down}},
        Row{Status::connected, Status::connectingIP, {down, signal}},
        Row{Status::connected, Status::connected, {up, signal}},
    };
    wifi::ConnectionMetrics metrics;
    for (const Row& row : rows) {
        metrics.reportChange(info(row.from), info(row.to));
        EXPECT_EQ(takeGaugeReports(), row.reports)
            << ::testing::PrintToString(row.from) << " to " << ::testing::PrintToString(row.to);
    }
}

TEST_F(ConnectionMetrics, UnknownSignalIsReportedAsMinus100) {
    wifi::ConnectionMetrics metrics;
    metrics.reportChange(info(Status::connectingWifi), info(Status::connectingIP, "Home", -100));
    EXPECT_EQ(takeGaugeReports(),
              (Reports{{"quarn.wifi.connected", 0.0}, {"quarn.wifi.signal-strength-dbm", -100.0}}));
}

TEST_F(ConnectionMetrics, SuccessIsReportedBeforeTheTotal) {
    wifi::ConnectionMetrics metrics;
    metrics.reportSuccess();
    EXPECT_EQ(takeGaugeReports(), (Reports{{"quarn.wifi.connection-attempt.success", 1.0},
                                           {"quarn.wifi.connection-attempt.total", 1.0}}));
}

}  // namespace
}  // namespace kaz::test
