// The publication of the connection state, and the timer that polls the signal.
#include "unit/manager/engine_fixture.h"

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class ConnectionRefresh : public EngineWithSupplicant {};

class SignalPoll : public EngineWithSupplicant {};

TEST_F(ConnectionRefresh, ReportIsPublishedByTheNextIdlePass) {
    reportLinkUp("Home");
    EXPECT_EQ(engine->connectionInfo(), ConnectionInfo());
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    communicator->runIdlePass();
    EXPECT_EQ(state(), R"(status=connectingIP, ssid="Home", signal=-50)");
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1});
}

TEST_F(ConnectionRefresh, BurstOfReportsInvokesOneCallback) {
    for (int i = 0; i < 10; ++i) {
        reportLinkUp("Home");
        reportStatus(SupplicantStatus::Connecting);
        reportOnline(i % 2 == 0);
    }
    runUntilIdle();
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1});
}

TEST_F(ConnectionRefresh, CallbackSeesTheNewConnectionInfo) {
    ConnectionInfo seen;
    engine->onConnectionInfoChanged([&] { seen = engine->connectionInfo(); });
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(seen.ssid, "Home");
    EXPECT_EQ(seen, engine->connectionInfo());
}

TEST_F(ConnectionRefresh, NewConnectionInfoIsLogged) {
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(log.records(),
              Records{debug(R"(connectionInfo changed: status=connectingIP, ssid="Home", signal=-50)")});
}

TEST_F(ConnectionRefresh, NewConnectionInfoIsLoggedBeforeTheReactions) {
    std::size_t recordsAtTimer = 0;
    stack->onCall = [&](const std::string& call) {
        if (call == "configureTimerSync(true, 60000)") {
            recordsAtTimer = log.records().size();
        }
    };
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(recordsAtTimer, 1U);
}

TEST_F(ConnectionRefresh, UnchangedConnectionInfoHasNoEffect) {
    becomeConnected("Home");
    reportBss("Home");
    reportStatus(SupplicantStatus::Connected);
    reportOnline(true);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    EXPECT_EQ(takeGaugeReports(), GaugeReports{});
    EXPECT_TRUE(log.records().empty());
}

TEST_F(ConnectionRefresh, ChangeOfAnyFieldIsPublished) {
    becomeConnected("Home");
    reportBss("Home", -51);
    runUntilIdle();
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1}) << "signal";
    reportOnline(false);
    runUntilIdle();
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1}) << "status";
    reportStatus(SupplicantStatus::Disconnected);
    runUntilIdle();
    takeCallbacks();
    clock->advance(1s);
    engine->forgetNetwork("Home");
    runUntilIdle();
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1}) << "reason and time of the disconnect";
}

TEST_F(ConnectionRefresh, CallbackFollowsThePriorities) {
    stack->configure("Home");
    communicator->networkSelectedHandler("Home");
    runUntilIdle();
    std::vector<std::string> order;
    engine->onConnectionInfoChanged([&] { order.emplace_back("callback"); });
    stack->onCall = [&](const std::string& call) { order.push_back(call); };
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(order, (Calls{listing, "setPrioritySync(1, 2)", "callback", saving}));
}

TEST_F(ConnectionRefresh, ExpiredAttemptIsPublishedAsEnded) {
    engine->connectConfigured("Home");
    runUntilIdle();
    clock->advance(2s);
    forget();
    communicator->runIdlePass();
    EXPECT_EQ(log.records().front(),
              warning(R"(No response from wpa_supplicant, assuming we are disconnected from ssid="Home")"));
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1});
}

TEST_F(SignalPoll, SignalTimerRunsExactlyWhileNotDisconnected) {
    reportBss("Home");
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{timerOn}) << "with the first change, too";
    reportStatus(SupplicantStatus::Connected);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{listing, saving})) << "no second arming";
    reportOnline(true);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
    reportStatus(SupplicantStatus::Disconnected);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{timerOff});
    engine->forgetNetwork("Home");
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{posting, listing, saving})) << "disconnected as before";
}

TEST_F(SignalPoll, PolledSignalIsPublishedByTheNextIdlePass) {
    becomeConnected("Home");
    stack->signalPoll = -33;
    communicator->expireTimer();
    EXPECT_EQ(takeCalls(), Calls{"signalPollSync"});
    EXPECT_EQ(engine->connectionInfo().signal, -50);
    runUntilIdle();
    EXPECT_EQ(engine->connectionInfo().signal, -33);
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1});
}

TEST_F(SignalPoll, FailedPollKeepsTheSignal) {
    becomeConnected("Home");
    stack->signalPoll = -33;
    stack->failing = {"signalPollSync"};
    communicator->expireTimer();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{"signalPollSync fails"});
    EXPECT_EQ(engine->connectionInfo().signal, -50);
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(SignalPoll, PolledSignalWithoutABssIsIgnored) {
    stack->signalPoll = -33;
    communicator->expireTimer();
    runUntilIdle();
    EXPECT_EQ(engine->connectionInfo(), ConnectionInfo());
}

}  // namespace
}  // namespace kaz::test
