// EAP methods, and how success and failure of a connection change the supplicant's configuration.
#include "unit/manager/engine_fixture.h"

#include <set>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;
using Stored = FakeWifiStack::Network;
using Methods = std::set<std::string>;

class EapMethods : public EngineTest {};
class Success : public EngineTest {};
class Reenabling : public EngineTest {};
class PostponedSave : public EngineTest {};

// A connection to "Home" is requested; "Cafe" is configured too.
class DuringAConnect : public EngineTest {
  protected:
    DuringAConnect() {
        stack->configure("Cafe");
        startWithSupplicant();
        connectTo("Home");
    }
};

TEST_F(EapMethods, EapMethodsAreTheOfferedCandidates) {
    struct Row {
        Methods offered;
        Methods usable;
    };
    const std::vector<Row> rows{
        {{"TLS", "PEAP", "MSCHAPV2"}, {"MSCHAPV2", "PEAP"}},
        {{"PEAP", "TTLS", "MSCHAPV2", "PWD"}, {"MSCHAPV2", "PEAP", "PWD", "TTLS"}},
        {{"MD5", "TLS", "GTC", "OTP", "SIM"}, {}},
        {{"peap", "Pwd", "PEAP ", ""}, {}},
        {{"PWD"}, {"PWD"}},
        {{}, {}},
    };
    start();
    for (const Row& row : rows) {
        stack->eapMethods = row.offered;
        attachSupplicant();
        EXPECT_EQ(engine->eapMethods(), row.usable) << ::testing::PrintToString(row.offered);
    }
}

TEST_F(EapMethods, EapMethodsAreEmptyUntilTheSupplicantNamesThem) {
    stack->eapMethods = {"PEAP"};
    start();
    EXPECT_EQ(engine->eapMethods(), Methods{});
    stack->failing = {"eapMethodsSync"};
    attachSupplicant();
    EXPECT_EQ(engine->eapMethods(), Methods{});
}

TEST_F(EapMethods, NewEapMethodsInvokeNoCallback) {
    startWithSupplicant();
    stack->eapMethods = {"TTLS"};
    attachSupplicant();
    EXPECT_EQ(engine->eapMethods(), Methods{"TTLS"});
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(EapMethods, Phase2MethodsAreFixed) {
    const Methods four{"GTC", "MSCHAP", "MSCHAPV2", "PAP"};
    start();
    EXPECT_EQ(engine->phase2Methods(), four);
    attachSupplicant();
    EXPECT_EQ(engine->phase2Methods(), four);
    detachSupplicant();
    EXPECT_EQ(engine->phase2Methods(), four);
    EXPECT_EQ(log.records().size(), 0U);
}

TEST_F(Success, FirstChangeAfterTheStartSetsNoPriorities) {
    stack->configure("Home");
    startWithSupplicant();
    reportOnline(true);
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1});
    EXPECT_EQ(takeCalls(), Calls{timerOn}) << "no priorities, nothing to save";
    EXPECT_EQ(takeGaugeReports(),
              (GaugeReports{{"quarn.wifi.connected", 1.0}, {"quarn.wifi.signal-strength-dbm", -50.0}}));
}

TEST_F(Success, ConnectedNetworkGetsPriority2AndAllOthers1) {
    stack->configure("Cafe");
    stack->configure("Home");
    stack->configure(std::nullopt);
    stack->configure("Home");
    startWithSupplicant();
    selectNetwork("Home");
    reportLinkUp("Home");
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(), (Calls{listing, "setPrioritySync(1, 1)", "setPrioritySync(2, 2)",
                                  "setPrioritySync(3, 1)", "setPrioritySync(4, 2)", saving}));
    const LogRecord priority = debug(R"(Setting priority=2 for ssid="Home")");
    EXPECT_EQ(log.records(),
              (Records{debug(R"(connectionInfo changed: status=connectingIP, ssid="Home", signal=-50)"),
                       priority, priority}));
}

TEST_F(Success, SuccessIsNotRepeatedWhenTheLinkGetsItsAddress) {
    startWithSupplicant();
    communicator->networkSelectedHandler("Home");
    runUntilIdle();
    reportLinkUp("Home");
    runUntilIdle();
    forget();
    reportOnline(true);
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_EQ(takeCalls(), Calls{});
    reportOnline(false);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 2});
}

TEST_F(Success, SwitchingNetworksMovesThePriority) {
    stack->configure("A");
    stack->configure("B");
    startWithSupplicant();
    becomeConnected("A");
    engine->connectConfigured("B");
    communicator->runTasks();
    reportLinkUp("B");
    takeCalls();
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(), (Calls{listing, "setPrioritySync(1, 1)", "setPrioritySync(2, 2)", listing,
                                  "setEnabledSync(1, true)", "setEnabledSync(2, true)", saving}));
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{1, "A", true, 1}, {2, "B", true, 2}}));
}

TEST_F(Success, RoamingToAnotherNetworkMovesThePriority) {
    stack->configure("A");
    stack->configure("B");
    startWithSupplicant();
    becomeConnected("A");
    reportBss("B");
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connected, ssid="B", signal=-50)");
    EXPECT_EQ(takeCalls(), (Calls{listing, "setPrioritySync(1, 1)", "setPrioritySync(2, 2)", saving}));
}

TEST_F(Success, NetworkThatReplacesAConnectionGetsPriority2WithoutAnAddress) {
    stack->configure("A");
    stack->configure("B");
    startWithSupplicant();
    becomeConnected("A");
    reportOnline(false);
    reportBss("B");
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connectingIP, ssid="B", signal=-50)");
    EXPECT_EQ(takeCalls(), (Calls{listing, "setPrioritySync(1, 1)", "setPrioritySync(2, 2)", saving}));
}

TEST_F(Success, SuccessSavesEvenWhenTheListingFails) {
    stack->configure("Home");
    startWithSupplicant();
    selectNetwork("Home");
    stack->failing = {"getAllConfiguredNetworksSync"};
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{"getAllConfiguredNetworksSync fails", saving}));
}

TEST_F(Success, FailedPriorityDoesNotStopTheOthers) {
    stack->configure("Home");
    stack->configure("Cafe");
    startWithSupplicant();
    selectNetwork("Home");
    stack->failing = {"setPrioritySync"};
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(takeCalls(),
              (Calls{listing, "setPrioritySync(1, 2) fails", "setPrioritySync(2, 1) fails", saving}));
}

TEST_F(DuringAConnect, SuccessfulConnectEnablesAllNetworksOnce) {
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{1, "Cafe", false, 0}, {2, "Home", true, 0}}));
    reportLinkUp("Home");
    EXPECT_EQ(callsUntilIdle(), (Calls{listing, "setPrioritySync(1, 1)", "setPrioritySync(2, 2)", listing,
                                       "setEnabledSync(1, true)", "setEnabledSync(2, true)", saving}));
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{1, "Cafe", true, 1}, {2, "Home", true, 2}}));
    runUntilIdle();
    reportOnline(true);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{}) << "once";
}

TEST_F(DuringAConnect, FailedConnectEnablesAllNetworks) {
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    takeCalls();
    reportStatus(SupplicantStatus::Disconnected);
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=disconnected, disconnectReason=causedBySystem, disconnectssid="Home")");
    EXPECT_EQ(takeCalls(),
              (Calls{timerOff, listing, "setEnabledSync(1, true)", "setEnabledSync(2, true)", saving}));
}

TEST_F(Reenabling, TimedOutConnectEnablesAllNetworks) {
    startWithSupplicant();
    connectTo("Home");
    clock->advance(2s);
    EXPECT_EQ(callsUntilIdle(), (Calls{timerOff, listing, "setEnabledSync(1, true)", saving}));
}

TEST_F(Reenabling, DisconnectDuringAConnectEnablesAllNetworks) {
    startWithSupplicant();
    connectTo("Home");
    engine->disconnect();
    EXPECT_EQ(callsUntilIdle(),
              (Calls{timerOff, listing, "setEnabledSync(1, true)", "disconnectSync", saving}));
}

TEST_F(DuringAConnect, FailedEnablingContinuesAndIsNotRetried) {
    stack->failing = {"setEnabledSync"};
    clock->advance(2s);
    EXPECT_EQ(callsUntilIdle(), (Calls{timerOff, listing, "setEnabledSync(1, true) fails",
                                       "setEnabledSync(2, true) fails", saving}));
    reportStatus(SupplicantStatus::Connecting);
    reportBss("Cafe");
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{timerOn});
}

TEST_F(Reenabling, NothingIsEnabledOrSavedDuringLinkSetUp) {
    startWithSupplicant();
    connectTo("Home");
    takeCalls();
    reportBss("Home", -70);
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connectingWifi, ssid="Home", signal=-70)");
    EXPECT_EQ(takeCalls(), Calls{}) << "nothing is enabled, nothing is saved";
}

TEST_F(DuringAConnect, SaveWaitsUntilTheOtherNetworksAreEnabled) {
    engine->forgetNetwork("Cafe");
    EXPECT_EQ(callsUntilIdle(), (Calls{listing, "removeSync(1)", listing}));
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(takeCalls(),
              (Calls{listing, "setPrioritySync(2, 2)", listing, "setEnabledSync(2, true)", saving}));
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
}

// Home may never have worked, and the file still has what did.
TEST_F(DuringAConnect, EngineEndEnablesAllNetworksAndSavesNothing) {
    takeCalls();
    engine.reset();
    EXPECT_EQ(takeCalls(), (Calls{"stopEventLoop", "~Communicator", listing, "setEnabledSync(1, true)",
                                  "setEnabledSync(2, true)"}));
}

// A loop that is stopped makes its last pass at once, before the destructor of the communicator.
TEST_F(DuringAConnect, PassRightAfterTheStopEnablesAllNetworks) {
    takeCalls();
    stack->onCall = [&](const std::string& call) {
        if (call == "stopEventLoop") {
            communicator->runIdlePass();
        }
    };
    engine.reset();
    EXPECT_EQ(takeCalls(), (Calls{"stopEventLoop", listing, "setEnabledSync(1, true)",
                                  "setEnabledSync(2, true)", "~Communicator"}));
}

TEST_F(DuringAConnect, EngineEndSavesWhatWasRequestedBefore) {
    engine->forgetNetwork("Cafe");
    runUntilIdle();
    takeCalls();
    engine.reset();
    EXPECT_EQ(takeCalls(),
              (Calls{"stopEventLoop", "~Communicator", listing, "setEnabledSync(2, true)", saving}));
}

TEST_F(PostponedSave, SaveDoesNotWaitAfterAFailedSelection) {
    startWithSupplicant();
    stack->failing = {"selectSync"};
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    engine->forgetNetwork("Cafe");
    communicator->runTasks();
    EXPECT_EQ(callsUntilIdle(), Calls{saving});
}

TEST_F(PostponedSave, ConnectAtTheStartSavesWithTheSecondChange) {
    startWithSupplicant();
    // The first change publishes the attempt, so the second counts as a success.
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    communicator->runTasks();
    reportLinkUp("Home");
    EXPECT_EQ(callsUntilIdle(),
              (Calls{listing, "setPrioritySync(1, 2)", listing, "setEnabledSync(1, true)", saving}));
}

}  // namespace
}  // namespace kaz::test
