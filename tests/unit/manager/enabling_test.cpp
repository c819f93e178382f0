// The choice of on or off, and the supplicant attached and detached.
#include "unit/manager/engine_fixture.h"

#include <future>
#include <thread>
#include <utility>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class Enabling : public EngineTest {};
class SupplicantAttached : public EngineTest {};
class SupplicantDetached : public EngineTest {};

TEST_F(Enabling, SetEnabledWritesTheFileBeforeItReturnsAndPostsTheRest) {
    stack->enabledConfiguration = false;
    start();
    engine->setEnabled(true);
    EXPECT_TRUE(engine->isEnabled()) << "at once";
    EXPECT_EQ(takeCalls(), (Calls{posting, "writeEnabledConfiguration(true)", posting}));
    EXPECT_EQ(takeCallbacks(), Callbacks{}) << "the callback is for the loop thread";
    communicator->runOneTask();
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
    EXPECT_EQ(takeCalls(), Calls{});
    communicator->runOneTask();
    EXPECT_EQ(takeCalls(), Calls{"startStopSupplicantSync(true)"});
    EXPECT_EQ(communicator->queuedTasks(), 0U);
}

TEST_F(Enabling, RepeatedSetEnabledCallsBackOnceButWritesAndStartsAgain) {
    stack->enabledConfiguration = false;
    start();
    engine->setEnabled(true);
    engine->setEnabled(true);
    EXPECT_EQ(takeCalls(), (Calls{posting, "writeEnabledConfiguration(true)", posting,
                                  "writeEnabledConfiguration(true)", posting}));
    communicator->runTasks();
    EXPECT_EQ(takeCalls(), (Calls{"startStopSupplicantSync(true)", "startStopSupplicantSync(true)"}));
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(Enabling, SetEnabledFalseStopsTheSupplicant) {
    start();
    engine->setEnabled(false);
    EXPECT_FALSE(engine->isEnabled());
    communicator->runTasks();
    EXPECT_EQ(takeCalls(), (Calls{posting, "writeEnabledConfiguration(false)", posting,
                                  "startStopSupplicantSync(false)"}));
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(Enabling, EverySetEnabledIsLogged) {
    start();
    engine->setEnabled(true);
    engine->setEnabled(true);
    engine->setEnabled(false);
    EXPECT_EQ(log.records(),
              (Records{info("Turning wifi on"), info("Turning wifi on"), info("Turning wifi off")}));
}

TEST_F(Enabling, ChoiceHoldsWhenWritingAndStartingFail) {
    stack->failing = {"writeEnabledConfiguration", "startStopSupplicantSync"};
    for (const bool on : {true, false}) {
        stack->enabledConfiguration = !on;
        start();
        engine->setEnabled(on);
        communicator->runTasks();
        EXPECT_EQ(engine->isEnabled(), on);
        const std::string argument = on ? "(true)" : "(false)";
        EXPECT_EQ(takeCalls(), (Calls{posting, "writeEnabledConfiguration" + argument + " fails", posting,
                                      "startStopSupplicantSync" + argument + " fails"}));
    }
}

TEST_F(Enabling, ChoiceIsKeptWhenTheSupplicantDetachesDuringTheWrite) {
    startWithSupplicant();
    bool gone = false;
    stack->onCall = [&](const std::string& call) {
        if (call == "writeEnabledConfiguration(false)" && !std::exchange(gone, true)) {
            std::thread([this] { detachSupplicant(); }).join();  // the file still says on
        }
    };
    engine->setEnabled(false);
    EXPECT_TRUE(gone);
    EXPECT_FALSE(engine->isEnabled());
    stack->enabledConfiguration = true;
    attachSupplicant();
    EXPECT_TRUE(engine->isEnabled()) << "the next attach reads the file again";
}

TEST_F(Enabling, ChoiceMadeDuringTheReadIsKept) {
    startWithSupplicant();
    stack->failing = {"writeEnabledConfiguration"};
    bool made = false;
    std::future<void> choice;
    stack->onCall = [&](const std::string& call) {
        if (call == "readEnabledConfiguration" && !std::exchange(made, true)) {
            choice = std::async(std::launch::async, [this] { engine->setEnabled(false); });
            ASSERT_TRUE(log.waitForText(spdlog::level::info, "Turning wifi off"));
        }
    };
    detachSupplicant();
    ASSERT_TRUE(made);
    choice.get();
    EXPECT_FALSE(engine->isEnabled());
    attachSupplicant();
    EXPECT_TRUE(engine->isEnabled()) << "the next attach reads the file again";
}

// As a sink of the log does that hears of a failed write.
TEST_F(Enabling, ChoiceMadeDuringTheWriteOnTheSameThreadIsTheLast) {
    start();
    bool made = false;
    stack->onCall = [&](const std::string& call) {
        if (call == "writeEnabledConfiguration(true)" && !std::exchange(made, true)) {
            engine->setEnabled(false);
        }
    };
    engine->setEnabled(true);
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_FALSE(stack->enabledConfiguration);
    communicator->runTasks();
    EXPECT_EQ(takeCalls(),
              (Calls{"writeEnabledConfiguration(true)", posting, "writeEnabledConfiguration(false)", posting,
                     "writeEnabledConfiguration(false)", posting, "startStopSupplicantSync(false)",
                     "startStopSupplicantSync(false)"}));
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(Enabling, ChoiceMadeDuringTheReadOnTheSameThreadIsKept) {
    startWithSupplicant();
    stack->failing = {"writeEnabledConfiguration"};
    bool made = false;
    stack->onCall = [&](const std::string& call) {
        if (call == "readEnabledConfiguration" && !std::exchange(made, true)) {
            engine->setEnabled(false);
        }
    };
    detachSupplicant();
    EXPECT_TRUE(made);
    EXPECT_FALSE(engine->isEnabled());
    attachSupplicant();
    EXPECT_TRUE(engine->isEnabled()) << "the next attach reads the file again";
}

TEST_F(Enabling, UnwrittenChoiceHoldsUntilTheNextAttachOrDetach) {
    startWithSupplicant();
    stack->failing = {"writeEnabledConfiguration"};
    engine->setEnabled(false);
    EXPECT_FALSE(engine->isEnabled());
    detachSupplicant();
    EXPECT_TRUE(engine->isEnabled());
    EXPECT_FALSE(engine->isWifiStackInitialized());
}

TEST_F(SupplicantAttached, AttachAsksForMethodsAndNetworksBeforeItReadsTheFile) {
    start();
    attachSupplicant();
    EXPECT_EQ(takeCalls(), (Calls{"isSupplicantOn", "eapMethodsSync", listing, "readEnabledConfiguration"}));
    EXPECT_TRUE(engine->isWifiStackInitialized());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
    EXPECT_EQ(communicator->queuedTasks(), 0U) << "the callback was called directly";
}

TEST_F(SupplicantAttached, SecondAttachInvokesNoCallback) {
    startWithSupplicant();
    attachSupplicant();
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    EXPECT_TRUE(engine->isWifiStackInitialized());
}

TEST_F(SupplicantAttached, AttachWithAChangedFileInvokesOneCallback) {
    start();
    stack->enabledConfiguration = false;
    attachSupplicant();
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_TRUE(engine->isWifiStackInitialized());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(SupplicantAttached, SecondAttachWithAChangedFileInvokesTheCallback) {
    startWithSupplicant();
    stack->enabledConfiguration = false;
    attachSupplicant();
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(SupplicantAttached, AccessPointsReportedBeforeTheAttachAreKept) {
    start();
    stack->configure("Home");
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    attachSupplicant();
    runUntilIdle();
    EXPECT_EQ(engine->networks(), (std::vector<WifiNetwork>{{"Home", -50, SecurityMode::rsnPsk, true}}));
}

TEST_F(SupplicantAttached, ConnectionReportedBeforeTheAttachIsPublishedWithoutADisconnect) {
    start();
    reportOnline(true);
    reportLinkUp("Home");
    attachSupplicant();
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_EQ(engine->connectionInfo().disconnectReason, ConnectionInfo::DisconnectReason::unknown);
}

TEST_F(SupplicantAttached, AttachClearsTheDisconnectOfAnEarlierAttempt) {
    start();
    engine->connectConfigured("Nowhere");
    runUntilIdle();
    clock->advance(2s);
    runUntilIdle();
    ASSERT_EQ(engine->connectionInfo().disconnectReason, ConnectionInfo::DisconnectReason::causedBySystem);
    attachSupplicant();
    runUntilIdle();
    EXPECT_EQ(engine->connectionInfo(), ConnectionInfo());
}

TEST_F(SupplicantDetached, DetachOnlyReadsTheFile) {
    startWithSupplicant();
    detachSupplicant();
    EXPECT_EQ(takeCalls(), (Calls{"isSupplicantOn", "readEnabledConfiguration"}));
    EXPECT_FALSE(engine->isWifiStackInitialized());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(SupplicantDetached, DetachEndsScanningWithoutItsCallback) {
    startWithSupplicant();
    reportScanning(true);
    forget();
    detachSupplicant();
    EXPECT_FALSE(engine->isScanning());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(SupplicantDetached, DetachEmptiesTheListAtTheNextIdlePass) {
    startWithSupplicant();
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    runUntilIdle();
    forget();
    detachSupplicant();
    EXPECT_EQ(engine->networks().size(), 1U);
    runUntilIdle();
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_EQ(takeCallbacks(), (Callbacks{.enabled = 1, .networks = 1, .connection = 1}))
        << "the connection's signal is unknown now";
}

TEST_F(SupplicantDetached, DetachEmptiesTheListWhenTheConnectionStaysAsItWas) {
    startWithSupplicant();
    engine->disconnect();
    runUntilIdle();
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    runUntilIdle();
    ASSERT_EQ(engine->networks().size(), 1U);
    forget();
    detachSupplicant();
    runUntilIdle();
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_EQ(takeCallbacks(), (Callbacks{.enabled = 1, .networks = 1}));
}

TEST_F(SupplicantDetached, DetachWithoutAnAttachInvokesNoCallback) {
    start();
    detachSupplicant();
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(SupplicantDetached, DetachClearsTheConnectionWithoutADisconnectRecord) {
    startWithSupplicant();
    becomeConnected("Home");
    detachSupplicant();
    runUntilIdle();
    EXPECT_EQ(state(), "status=disconnected, disconnectReason=unknown");
    EXPECT_EQ(engine->connectionInfo().signal, -100);
    EXPECT_EQ(takeCallbacks(), (Callbacks{.enabled = 1, .connection = 1}));
    EXPECT_EQ(takeCalls(), (Calls{"isSupplicantOn", "readEnabledConfiguration", timerOff}));
}

TEST_F(SupplicantDetached, DetachClearsTheConfiguredNetworks) {
    stack->configure("Home");
    startWithSupplicant();
    detachSupplicant();
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    runUntilIdle();
    EXPECT_EQ(engine->networks(), (std::vector<WifiNetwork>{{"Home", -50, SecurityMode::rsnPsk, false}}));
}

TEST_F(SupplicantDetached, DetachKeepsTheEapMethods) {
    stack->eapMethods = {"PEAP"};
    startWithSupplicant();
    detachSupplicant();
    EXPECT_EQ(engine->eapMethods(), std::set<std::string>{"PEAP"});
}

TEST_F(SupplicantDetached, NewSupplicantHasNoNetworksToEnable) {
    stack->configure("Home");
    startWithSupplicant();
    engine->connectConfigured("Home");
    runUntilIdle();
    detachSupplicant();
    EXPECT_EQ(callsUntilIdle(), Calls{timerOff}) << "there is no supplicant to enable them";
    attachSupplicant();
    engine->forgetNetwork("Cafe");
    EXPECT_EQ(callsUntilIdle(), (Calls{listing, saving}))
        << "saved at once, and nothing enabled again: a new supplicant starts with all networks enabled";
}

}  // namespace
}  // namespace kaz::test
