// EAP methods, and what success and failure of a connection do to the supplicant's configuration.
#include "unit/manager/engine_fixture.h"

#include <array>
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

TEST_F(EapMethods, AreTheCandidatesThatTheSupplicantOffers) {
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
        supplicantComes();
        EXPECT_EQ(engine->eapMethods(), row.usable) << ::testing::PrintToString(row.offered);
    }
}

TEST_F(EapMethods, AreEmptyBeforeTheSupplicantComesAndWhenItDoesNotSay) {
    stack->eapMethods = {"PEAP"};
    start();
    EXPECT_EQ(engine->eapMethods(), Methods{});
    stack->failing = {"eapMethodsSync"};
    supplicantComes();
    EXPECT_EQ(engine->eapMethods(), Methods{});
}

TEST_F(EapMethods, AreReplacedWithoutACallbackOfTheirOwn) {
    startWithSupplicant();
    stack->eapMethods = {"TTLS"};
    supplicantComes();
    EXPECT_EQ(engine->eapMethods(), Methods{"TTLS"});
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(EapMethods, OfPhase2AreTheSameFourWhetherOrNotTheSupplicantRuns) {
    const Methods four{"GTC", "MSCHAP", "MSCHAPV2", "PAP"};
    start();
    EXPECT_EQ(engine->phase2Methods(), four);
    supplicantComes();
    EXPECT_EQ(engine->phase2Methods(), four);
    supplicantGoes();
    EXPECT_EQ(engine->phase2Methods(), four);
    EXPECT_EQ(log.records().size(), 0U);
}

TEST_F(Success, IsNotCountedForTheFirstChangeAfterTheStart) {
    stack->configure("Home");
    startWithSupplicant();
    reportOnline(true);
    reportLinkUp("Home");
    settle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1});
    EXPECT_EQ(takeCalls(), Calls{"configureTimerSync(true, 60000)"}) << "no priorities, nothing to save";
    EXPECT_EQ(takeGaugeReports(),
              (GaugeReports{{"quarn.wifi.connected", 1.0}, {"quarn.wifi.signal-strength-dbm", -50.0}}));
}

TEST_F(Success, GivesTheNetworkPriorityTwoAndAllOthersOneAndSaves) {
    stack->configure("Cafe");
    stack->configure("Home");
    stack->configure(std::nullopt);
    stack->configure("Home");
    startWithSupplicant();
    communicator->networkSelectedHandler("Home");
    settle();
    forget();
    reportLinkUp("Home");
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(),
              (Calls{"getAllConfiguredNetworksSync", "setPrioritySync(1, 1)", "setPrioritySync(2, 2)",
                     "setPrioritySync(3, 1)", "setPrioritySync(4, 2)", "saveNetworkConfigurationSync"}));
    const LogRecord priority{spdlog::level::debug, R"(Setting priority=2 for ssid="Home")"};
    EXPECT_EQ(
        log.records(),
        (RecordingLog::Records{
            {spdlog::level::debug, R"(connectionInfo changed: status=connectingIP, ssid="Home", signal=-50)"},
            priority,
            priority}));
}

TEST_F(Success, IsNotRepeatedWhenTheAddressIsThere) {
    startWithSupplicant();
    communicator->networkSelectedHandler("Home");
    settle();
    reportLinkUp("Home");
    settle();
    forget();
    reportOnline(true);
    settle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_EQ(takeCalls(), Calls{});
    reportOnline(false);
    settle();
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 2});
}

TEST_F(Success, OnAnotherNetworkMovesThePriority) {
    stack->configure("A");
    stack->configure("B");
    startWithSupplicant();
    becomeConnected("A");
    engine->connectConfigured("B");
    communicator->runTasks();
    reportLinkUp("B");
    takeCalls();
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(),
              (Calls{"getAllConfiguredNetworksSync", "setPrioritySync(1, 1)", "setPrioritySync(2, 2)",
                     "getAllConfiguredNetworksSync", "setEnabledSync(1, true)", "setEnabledSync(2, true)",
                     "saveNetworkConfigurationSync"}));
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{1, "A", true, 1}, {2, "B", true, 2}}));
}

TEST_F(Success, IsCountedWhenTheNetworkChangesWithoutAnAttempt) {
    stack->configure("A");
    stack->configure("B");
    startWithSupplicant();
    becomeConnected("A");
    reportBss("B");
    settle();
    EXPECT_EQ(state(), R"(status=connected, ssid="B", signal=-50)");
    EXPECT_EQ(takeCalls(), (Calls{"getAllConfiguredNetworksSync", "setPrioritySync(1, 1)",
                                  "setPrioritySync(2, 2)", "saveNetworkConfigurationSync"}));
}

TEST_F(Success, SavesEvenWithoutAListing) {
    stack->configure("Home");
    startWithSupplicant();
    communicator->networkSelectedHandler("Home");
    settle();
    forget();
    stack->failing = {"getAllConfiguredNetworksSync"};
    reportLinkUp("Home");
    settle();
    EXPECT_EQ(takeCalls(), (Calls{"getAllConfiguredNetworksSync fails", "saveNetworkConfigurationSync"}));
}

TEST_F(Success, CarriesOnWhenAPriorityCannotBeSet) {
    stack->configure("Home");
    stack->configure("Cafe");
    startWithSupplicant();
    communicator->networkSelectedHandler("Home");
    settle();
    forget();
    stack->failing = {"setPrioritySync"};
    reportLinkUp("Home");
    settle();
    EXPECT_EQ(takeCalls(), (Calls{"getAllConfiguredNetworksSync", "setPrioritySync(1, 2) fails",
                                  "setPrioritySync(2, 1) fails", "saveNetworkConfigurationSync"}));
}

TEST_F(Reenabling, FollowsTheSuccessOfAConnect) {
    stack->configure("Cafe");
    startWithSupplicant();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    settle();
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{1, "Cafe", false, 0}, {2, "Home", true, 0}}));
    reportLinkUp("Home");
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(),
              (Calls{"getAllConfiguredNetworksSync", "setPrioritySync(1, 1)", "setPrioritySync(2, 2)",
                     "getAllConfiguredNetworksSync", "setEnabledSync(1, true)", "setEnabledSync(2, true)",
                     "saveNetworkConfigurationSync"}));
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{1, "Cafe", true, 1}, {2, "Home", true, 2}}));
    settle();
    reportOnline(true);
    settle();
    EXPECT_EQ(takeCalls(), Calls{}) << "once";
}

TEST_F(Reenabling, FollowsTheFailureOfAConnect) {
    stack->configure("Cafe");
    startWithSupplicant();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    settle();
    reportStatus(SupplicantStatus::Connecting);
    settle();
    takeCalls();
    reportStatus(SupplicantStatus::Disconnected);
    settle();
    EXPECT_EQ(state(), R"(status=disconnected, disconnectReason=causedBySystem, disconnectssid="Home")");
    EXPECT_EQ(takeCalls(),
              (Calls{"configureTimerSync(false, 60000)", "getAllConfiguredNetworksSync",
                     "setEnabledSync(1, true)", "setEnabledSync(2, true)", "saveNetworkConfigurationSync"}));
}

TEST_F(Reenabling, FollowsTheTimeOutOfAConnect) {
    startWithSupplicant();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    settle();
    clock->advance(2s);
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(), (Calls{"configureTimerSync(false, 60000)", "getAllConfiguredNetworksSync",
                                  "setEnabledSync(1, true)", "saveNetworkConfigurationSync"}));
}

TEST_F(Reenabling, FollowsADisconnectDuringAConnect) {
    startWithSupplicant();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    settle();
    engine->disconnect();
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(),
              (Calls{"configureTimerSync(false, 60000)", "getAllConfiguredNetworksSync",
                     "setEnabledSync(1, true)", "disconnectSync", "saveNetworkConfigurationSync"}));
}

TEST_F(Reenabling, CarriesOnWhenANetworkCannotBeEnabledAndIsNotTriedAgain) {
    stack->configure("Cafe");
    startWithSupplicant();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    settle();
    stack->failing = {"setEnabledSync"};
    clock->advance(2s);
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(), (Calls{"configureTimerSync(false, 60000)", "getAllConfiguredNetworksSync",
                                  "setEnabledSync(1, true) fails", "setEnabledSync(2, true) fails",
                                  "saveNetworkConfigurationSync"}));
    reportStatus(SupplicantStatus::Connecting);
    reportBss("Cafe");
    settle();
    EXPECT_EQ(takeCalls(), Calls{"configureTimerSync(true, 60000)"});
}

TEST_F(Reenabling, WaitsWhileTheLinkIsStillSetUp) {
    startWithSupplicant();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    settle();
    takeCalls();
    reportBss("Home", -70);
    reportStatus(SupplicantStatus::Connecting);
    settle();
    EXPECT_EQ(state(), R"(status=connectingWifi, ssid="Home", signal=-70)");
    EXPECT_EQ(takeCalls(), Calls{}) << "nothing is enabled, nothing is saved";
}

TEST_F(PostponedSave, WaitsUntilTheOtherNetworksAreEnabledAgain) {
    stack->configure("Cafe");
    startWithSupplicant();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    settle();
    engine->forgetNetwork("Cafe");
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(),
              (Calls{"getAllConfiguredNetworksSync", "removeSync(1)", "getAllConfiguredNetworksSync"}));
    settle();
    EXPECT_EQ(takeCalls(), Calls{});
    reportLinkUp("Home");
    settle();
    EXPECT_EQ(takeCalls(),
              (Calls{"getAllConfiguredNetworksSync", "setPrioritySync(2, 2)", "getAllConfiguredNetworksSync",
                     "setEnabledSync(2, true)", "saveNetworkConfigurationSync"}));
    settle();
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(PostponedSave, IsMadeAtTheEndOnceTheOthersAreEnabledAgain) {
    stack->configure("Cafe");
    startWithSupplicant();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    settle();
    takeCalls();
    engine.reset();
    EXPECT_EQ(takeCalls(),
              (Calls{"stopEventLoop", "~Communicator", "getAllConfiguredNetworksSync",
                     "setEnabledSync(1, true)", "setEnabledSync(2, true)", "saveNetworkConfigurationSync"}));
}

TEST_F(PostponedSave, IsNotNeededWhenNothingCouldBeSelected) {
    startWithSupplicant();
    stack->failing = {"selectSync"};
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    engine->forgetNetwork("Cafe");
    communicator->runTasks();
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(), Calls{"saveNetworkConfigurationSync"});
}

TEST_F(PostponedSave, OfAConnectFromTheVeryFirstChangeComesWithTheSecond) {
    startWithSupplicant();
    // The first change publishes the attempt, so the second may do what a success asks for.
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    communicator->runTasks();
    reportLinkUp("Home");
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(),
              (Calls{"getAllConfiguredNetworksSync", "setPrioritySync(1, 2)", "getAllConfiguredNetworksSync",
                     "setEnabledSync(1, true)", "saveNetworkConfigurationSync"}));
}

}  // namespace
}  // namespace kaz::test
