// What the engine reports to the gauges, and in which order.
#include "unit/manager/engine_fixture.h"

#include <spdlog/sinks/callback_sink.h>
#include <spdlog/spdlog.h>

#include <string_view>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class Gauges : public EngineWithSupplicant {
  protected:
    GaugeReports reportsOfNextPass() {
        runUntilIdle();
        return takeGaugeReports();
    }

    const GaugeReport up{"quarn.wifi.connected", 1.0};
    const GaugeReport notUp{"quarn.wifi.connected", 0.0};
    const GaugeReport signal{"quarn.wifi.signal-strength-dbm", -50.0};
    const GaugeReport success{"quarn.wifi.connection-attempt.success", 1.0};
    const GaugeReport fail{"quarn.wifi.connection-attempt.fail", 1.0};
    const GaugeReport total{"quarn.wifi.connection-attempt.total", 1.0};
};

class GaugesOfANewEngine : public EngineTest {};

TEST_F(Gauges, RefreshBeforeAnyEventReportsNothing) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(reportsOfNextPass(), GaugeReports{});
    }
}

TEST_F(GaugesOfANewEngine, FirstPassReportsNothing) {
    construct();
    runUntilIdle();
    EXPECT_EQ(takeGaugeReports(), GaugeReports{});
    EXPECT_EQ(log.records(), Records{}) << "nothing is published";
}

TEST_F(Gauges, FirstChangeIsReportedButNotAsASuccess) {
    reportOnline(true);
    reportLinkUp("Home");
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{up, signal}));
}

TEST_F(Gauges, ConnectionAfterAFirstChangeWithoutOneIsASuccess) {
    detachSupplicant();
    EXPECT_EQ(reportsOfNextPass(), GaugeReports{notUp}) << "the signal is unknown now";
    attachSupplicant();
    reportLinkUp("Home");
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{notUp, signal, success, total}));
}

TEST_F(Gauges, RefreshWithoutAChangeReportsNothing) {
    reportLinkUp("Home");
    runUntilIdle();
    takeGaugeReports();
    reportLinkUp("Home");
    EXPECT_EQ(reportsOfNextPass(), GaugeReports{});
}

TEST_F(Gauges, FailedAttemptReportsFailureAndTotalOnce) {
    communicator->networkSelectedHandler("Home");
    EXPECT_EQ(reportsOfNextPass(), GaugeReports{notUp});
    clock->advance(2s);
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{notUp, fail, total}));
    EXPECT_EQ(reportsOfNextPass(), GaugeReports{});
}

TEST_F(Gauges, AttemptThatReachesConnectingIpReportsSuccessAndTotalOnce) {
    communicator->networkSelectedHandler("Home");
    runUntilIdle();
    takeGaugeReports();
    reportLinkUp("Home");
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{notUp, signal, success, total}));
    reportOnline(true);
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{up, signal}));
    reportOnline(false);
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{notUp, signal}));
}

TEST_F(Gauges, AttemptThatReachesConnectedReportsSuccess) {
    reportOnline(true);
    communicator->networkSelectedHandler("Home");
    runUntilIdle();
    takeGaugeReports();
    reportLinkUp("Home");
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{up, signal, success, total}));
}

TEST_F(Gauges, SwitchingNetworksReportsAnotherSuccess) {
    becomeConnected("A");
    reportOnline(false);
    reportBss("B");
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{notUp, signal, success, total}));
}

TEST_F(Gauges, ReconnectAfterADropReportsAnotherSuccess) {
    becomeConnected("A");
    reportStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{notUp}));
    reportStatus(SupplicantStatus::Connected);
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{up, signal, success, total}));
}

TEST_F(Gauges, DroppedConnectionReportsNoFailure) {
    becomeConnected("Home");
    reportStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{notUp}));
}

TEST_F(Gauges, UnknownSignalIsReportedAsMinus100) {
    communicator->networkSelectedHandler("Home");
    runUntilIdle();
    takeGaugeReports();
    reportBss("Home", -100);
    reportStatus(SupplicantStatus::Connected);
    EXPECT_EQ(reportsOfNextPass(),
              (GaugeReports{notUp, {"quarn.wifi.signal-strength-dbm", -100.0}, success, total}));
    reportOnline(true);
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{up, {"quarn.wifi.signal-strength-dbm", -100.0}}));
}

TEST_F(Gauges, EveryNewSignalIsReported) {
    becomeConnected("Home");
    stack->signalPoll = -61;
    communicator->expireTimer();
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{up, {"quarn.wifi.signal-strength-dbm", -61.0}}));
}

TEST_F(Gauges, NewConnectionInfoIsLoggedBeforeTheGaugesAreSet) {
    std::optional<GaugeReports> before;
    spdlog::default_logger()->sinks().push_back(
        std::make_shared<spdlog::sinks::callback_sink_st>([&](const spdlog::details::log_msg& record) {
            const std::string_view text(record.payload.data(), record.payload.size());
            if (text.starts_with("connectionInfo changed")) {
                before = takeGaugeReports();
            }
        }));
    reportLinkUp("Home");
    EXPECT_EQ(reportsOfNextPass(), (GaugeReports{notUp, signal}));
    EXPECT_EQ(before, GaugeReports{});
}

TEST_F(Gauges, GaugesAreSetBeforeTheSupplicantIsCalled) {
    communicator->networkSelectedHandler("Home");
    runUntilIdle();
    takeGaugeReports();
    GaugeReports reported;
    stack->onCall = [&](const std::string& call) {
        if (call == "getAllConfiguredNetworksSync") {
            reported = takeGaugeReports();
        }
    };
    reportLinkUp("Home");
    EXPECT_EQ(reportsOfNextPass(), GaugeReports{});
    EXPECT_EQ(reported, (GaugeReports{notUp, signal, success, total}));
}

TEST_F(Gauges, FailureIsReportedBeforeTheTimerIsDisarmed) {
    communicator->networkSelectedHandler("Home");
    runUntilIdle();
    clock->advance(2s);
    takeGaugeReports();
    GaugeReports reported;
    stack->onCall = [&](const std::string& /*call*/) { reported = takeGaugeReports(); };
    communicator->runIdlePass();
    EXPECT_EQ(reported, (GaugeReports{notUp, fail, total}));
}

}  // namespace
}  // namespace kaz::test
