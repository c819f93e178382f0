// The on/off switch, and the supplicant coming and going.
#include "unit/manager/engine_fixture.h"

#include <future>
#include <thread>
#include <utility>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class Enabling : public EngineTest {};
class SupplicantComing : public EngineTest {};
class SupplicantGoing : public EngineTest {};

TEST_F(Enabling, WritesTheConfigurationOnTheCallersThreadAndPostsTheRest) {
    stack->enabledConfiguration = false;
    start();
    engine->setEnabled(true);
    EXPECT_TRUE(engine->isEnabled()) << "at once";
    EXPECT_EQ(takeCalls(), (Calls{"pushTaskAsync_", "writeEnabledConfiguration(true)", "pushTaskAsync_"}));
    EXPECT_EQ(takeCallbacks(), Callbacks{}) << "the callback is for the loop thread";
    communicator->runOneTask();
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
    EXPECT_EQ(takeCalls(), Calls{});
    communicator->runOneTask();
    EXPECT_EQ(takeCalls(), Calls{"startStopSupplicantSync(true)"});
    EXPECT_EQ(communicator->queuedTasks(), 0U);
}

TEST_F(Enabling, TwiceCallsBackOnceAndWritesAndStartsTwice) {
    stack->enabledConfiguration = false;
    start();
    engine->setEnabled(true);
    engine->setEnabled(true);
    EXPECT_EQ(takeCalls(), (Calls{"pushTaskAsync_", "writeEnabledConfiguration(true)", "pushTaskAsync_",
                                  "writeEnabledConfiguration(true)", "pushTaskAsync_"}));
    communicator->runTasks();
    EXPECT_EQ(takeCalls(), (Calls{"startStopSupplicantSync(true)", "startStopSupplicantSync(true)"}));
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(Enabling, SwitchesOffToo) {
    start();
    engine->setEnabled(false);
    EXPECT_FALSE(engine->isEnabled());
    communicator->runTasks();
    EXPECT_EQ(takeCalls(), (Calls{"pushTaskAsync_", "writeEnabledConfiguration(false)", "pushTaskAsync_",
                                  "startStopSupplicantSync(false)"}));
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(Enabling, IsLoggedOnEveryCall) {
    start();
    engine->setEnabled(true);
    engine->setEnabled(true);
    engine->setEnabled(false);
    EXPECT_EQ(log.records(), (RecordingLog::Records{{spdlog::level::info, "Turning wifi on"},
                                                    {spdlog::level::info, "Turning wifi on"},
                                                    {spdlog::level::info, "Turning wifi off"}}));
}

TEST_F(Enabling, HoldsEvenWhenWritingAndStartingFail) {
    stack->enabledConfiguration = false;
    stack->failing = {"writeEnabledConfiguration", "startStopSupplicantSync"};
    start();
    engine->setEnabled(true);
    communicator->runTasks();
    EXPECT_TRUE(engine->isEnabled());
    EXPECT_EQ(takeCalls(), (Calls{"pushTaskAsync_", "writeEnabledConfiguration(true) fails", "pushTaskAsync_",
                                  "startStopSupplicantSync(true) fails"}));
}

TEST_F(Enabling, IsNotUndoneByASupplicantThatGoesWhileTheChoiceIsWritten) {
    startWithSupplicant();
    bool gone = false;
    stack->onCall = [&](const std::string& call) {
        if (call == "writeEnabledConfiguration(false)" && !std::exchange(gone, true)) {
            std::thread([this] { supplicantGoes(); }).join();  // while the file still says on
        }
    };
    engine->setEnabled(false);
    EXPECT_TRUE(gone);
    EXPECT_FALSE(engine->isEnabled());
    stack->enabledConfiguration = true;
    supplicantComes();
    EXPECT_TRUE(engine->isEnabled()) << "the next time, the file counts again";
}

TEST_F(Enabling, IsNotUndoneByAFileThatWasReadBefore) {
    startWithSupplicant();
    stack->failing = {"writeEnabledConfiguration"};
    std::future<void> choice;
    stack->onCall = [&](const std::string& call) {
        if (call == "readEnabledConfiguration" && !choice.valid()) {
            choice = std::async(std::launch::async, [this] { engine->setEnabled(false); });
            ASSERT_TRUE(log.waitForText(spdlog::level::info, "Turning wifi off"));
        }
    };
    supplicantGoes();
    ASSERT_TRUE(choice.valid());
    choice.get();
    EXPECT_FALSE(engine->isEnabled());
    supplicantComes();
    EXPECT_TRUE(engine->isEnabled()) << "the next time, the file counts again";
}

TEST_F(Enabling, ThatCannotBeWrittenHoldsUntilTheSupplicantComesOrGoes) {
    startWithSupplicant();
    stack->failing = {"writeEnabledConfiguration"};
    engine->setEnabled(false);
    EXPECT_FALSE(engine->isEnabled());
    supplicantGoes();
    EXPECT_TRUE(engine->isEnabled());
    EXPECT_FALSE(engine->isWifiStackInitialized());
}

TEST_F(SupplicantComing, ReadsItsMethodsAndNetworksAndThenTheConfiguration) {
    start();
    supplicantComes();
    EXPECT_EQ(takeCalls(), (Calls{"isSupplicantOn", "eapMethodsSync", "getAllConfiguredNetworksSync",
                                  "readEnabledConfiguration"}));
    EXPECT_TRUE(engine->isWifiStackInitialized());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
    EXPECT_EQ(communicator->queuedTasks(), 0U) << "the callback was called directly";
}

TEST_F(SupplicantComing, AgainCallsBackNoMore) {
    startWithSupplicant();
    supplicantComes();
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    EXPECT_TRUE(engine->isWifiStackInitialized());
}

TEST_F(SupplicantComing, WithAChangedConfigurationCallsBackOnceForBoth) {
    start();
    stack->enabledConfiguration = false;
    supplicantComes();
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_TRUE(engine->isWifiStackInitialized());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(SupplicantComing, AgainWithAChangedConfigurationCallsBack) {
    startWithSupplicant();
    stack->enabledConfiguration = false;
    supplicantComes();
    EXPECT_FALSE(engine->isEnabled());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(SupplicantComing, KeepsTheAccessPointsReportedJustBefore) {
    start();
    stack->configure("Home");
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    supplicantComes();
    settle();
    EXPECT_EQ(engine->networks(), (std::vector<WifiNetwork>{{"Home", -50, SecurityMode::rsnPsk, true}}));
}

TEST_F(SupplicantComing, StartsTheConnectionStateAfreshFromTheFactsReportedJustBefore) {
    start();
    reportOnline(true);
    reportLinkUp("Home");
    supplicantComes();
    settle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_EQ(engine->connectionInfo().disconnectReason, ConnectionInfo::DisconnectReason::unknown);
}

TEST_F(SupplicantComing, ForgetsHowAnAttemptEndedThatWasMadeWithoutIt) {
    start();
    engine->connectConfigured("Nowhere");
    settle();
    clock->advance(2s);
    settle();
    ASSERT_EQ(engine->connectionInfo().disconnectReason, ConnectionInfo::DisconnectReason::causedBySystem);
    supplicantComes();
    settle();
    EXPECT_EQ(engine->connectionInfo(), ConnectionInfo());
}

TEST_F(SupplicantGoing, ReadsTheConfigurationOnly) {
    startWithSupplicant();
    supplicantGoes();
    EXPECT_EQ(takeCalls(), (Calls{"isSupplicantOn", "readEnabledConfiguration"}));
    EXPECT_FALSE(engine->isWifiStackInitialized());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(SupplicantGoing, EndsScanningWithoutTheScanningCallback) {
    startWithSupplicant();
    reportScanning(true);
    forget();
    supplicantGoes();
    EXPECT_FALSE(engine->isScanning());
    EXPECT_EQ(takeCallbacks(), Callbacks{.enabled = 1});
}

TEST_F(SupplicantGoing, EmptiesTheNetworkListAtTheNextIdlePass) {
    startWithSupplicant();
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    settle();
    forget();
    supplicantGoes();
    EXPECT_EQ(engine->networks().size(), 1U);
    settle();
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_EQ(takeCallbacks(), (Callbacks{.enabled = 1, .networks = 1, .connection = 1}))
        << "the connection's signal is unknown now";
}

TEST_F(SupplicantGoing, EmptiesTheNetworkListAlsoWhenTheConnectionStaysAsItWas) {
    startWithSupplicant();
    engine->disconnect();
    settle();
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    settle();
    ASSERT_EQ(engine->networks().size(), 1U);
    forget();
    supplicantGoes();
    settle();
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_EQ(takeCallbacks(), (Callbacks{.enabled = 1, .networks = 1}));
}

TEST_F(SupplicantGoing, WithoutHavingBeenThereCallsNothingBack) {
    start();
    supplicantGoes();
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(SupplicantGoing, ClearsTheConnectionStateWithoutADisconnectRecord) {
    startWithSupplicant();
    becomeConnected("Home");
    supplicantGoes();
    settle();
    EXPECT_EQ(state(), "status=disconnected, disconnectReason=unknown");
    EXPECT_EQ(engine->connectionInfo().signal, -100);
    EXPECT_EQ(takeCallbacks(), (Callbacks{.enabled = 1, .connection = 1}));
    EXPECT_EQ(takeCalls(),
              (Calls{"isSupplicantOn", "readEnabledConfiguration", "configureTimerSync(false, 60000)"}));
}

TEST_F(SupplicantGoing, ForgetsWhichNetworksAreConfigured) {
    stack->configure("Home");
    startWithSupplicant();
    supplicantGoes();
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    settle();
    EXPECT_EQ(engine->networks(), (std::vector<WifiNetwork>{{"Home", -50, SecurityMode::rsnPsk, false}}));
}

TEST_F(SupplicantGoing, KeepsTheEapMethods) {
    stack->eapMethods = {"PEAP"};
    startWithSupplicant();
    supplicantGoes();
    EXPECT_EQ(engine->eapMethods(), std::set<std::string>{"PEAP"});
}

TEST_F(SupplicantGoing, ForgetsThatOtherNetworksWereDisabled) {
    stack->configure("Home");
    startWithSupplicant();
    engine->connectConfigured("Home");
    settle();
    supplicantGoes();
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(), Calls{"configureTimerSync(false, 60000)"}) << "there is nobody to enable them";
    supplicantComes();
    engine->forgetNetwork("Cafe");
    takeCalls();
    settle();
    EXPECT_EQ(takeCalls(), (Calls{"getAllConfiguredNetworksSync", "saveNetworkConfigurationSync"}))
        << "saved at once, and nothing enabled again: a new supplicant starts with all networks enabled";
}

}  // namespace
}  // namespace kaz::test
