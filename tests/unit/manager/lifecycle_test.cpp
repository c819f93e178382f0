// Construction, destruction and the idle pass.
#include "unit/manager/engine_fixture.h"

#include <typeindex>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class EngineStart : public EngineTest {};
class EngineEnd : public EngineTest {};
class IdlePass : public EngineTest {};

TEST_F(EngineStart, StartCallsTheCommunicatorInAFixedOrder) {
    construct();
    EXPECT_EQ(takeCalls(), (Calls{"readEnabledConfiguration", "setIdleTask", "setTimerCompletedTask", posting,
                                  "startEventLoop"}));
}

TEST_F(EngineStart, StartCreatesTheGaugesFirst) {
    std::vector<std::string> created;
    stack->onCall = [&](const std::string& call) {
        if (call == "readEnabledConfiguration") {
            created = takeGaugeCreations();
        }
    };
    construct();
    EXPECT_EQ(created.size(), 5U);
    EXPECT_TRUE(takeGaugeCreations().empty());
}

TEST_F(EngineStart, HandlersAreAssignedBetweenReadingTheFileAndTheIdleTask) {
    const std::type_index defaultHandler =
        FakeCommunicator(stack).wifiServiceStatusChangeHandler.target_type();
    std::vector<std::string> assigned;
    stack->onCall = [&](const std::string& call) {
        if (communicator->wifiServiceStatusChangeHandler.target_type() != defaultHandler) {
            assigned.push_back(call);
        }
    };
    construct();
    EXPECT_EQ(assigned, (Calls{"setIdleTask", "setTimerCompletedTask", posting, "startEventLoop"}));
}

TEST_F(EngineStart, NetworkdHandlerIsAssignedBeforeAnyTaskCanRun) {
    std::vector<std::string> assigned;
    stack->onCall = [&](const std::string& call) {
        if (communicator->networkdOnlineHandler) {
            assigned.push_back(call);
        }
    };
    construct();
    EXPECT_EQ(assigned, (Calls{posting, "startEventLoop"}));
}

TEST_F(EngineStart, StartPostsOneIdlePass) {
    construct();
    EXPECT_EQ(communicator->queuedTasks(), 1U);
    reportBssList({{"Home", -50, SecurityMode::none}});
    communicator->runOneTask();
    EXPECT_EQ(engine->networks().size(), 1U);
}

TEST_F(EngineStart, EnabledFlagStartsWithTheStoredChoice) {
    for (const bool enabled : {true, false}) {
        stack->enabledConfiguration = enabled;
        construct();
        EXPECT_EQ(engine->isEnabled(), enabled);
    }
}

TEST_F(EngineStart, GettersStartWithASystemWithoutWifi) {
    construct();
    EXPECT_FALSE(engine->isWifiStackInitialized());
    EXPECT_FALSE(engine->isScanning());
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_TRUE(engine->eapMethods().empty());
    EXPECT_EQ(engine->connectionInfo(), ConnectionInfo());
}

TEST_F(EngineEnd, LoopStopsBeforeTheCommunicatorIsDestroyed) {
    start();
    engine.reset();
    EXPECT_EQ(takeCalls(), (Calls{"stopEventLoop", "~Communicator"}));
}

TEST_F(EngineEnd, QueuedTasksAreDroppedAtTheEnd) {
    startWithSupplicant();
    engine->scan();
    engine->disconnect();
    EXPECT_EQ(engine->connect(settingsFor("Home")), ConnectResult::ok);
    takeCalls();
    engine.reset();
    EXPECT_EQ(takeCalls(), (Calls{"stopEventLoop", "~Communicator"}));
}

TEST_F(EngineEnd, PendingSaveIsMadeInsideTheCommunicatorsDestructor) {
    startWithSupplicant();
    engine->forgetNetwork("Home");
    communicator->runTasks();
    takeCalls();
    engine.reset();
    EXPECT_EQ(takeCalls(), (Calls{"stopEventLoop", "~Communicator", saving}));
}

TEST_F(EngineEnd, LastIdlePassPublishesAndCallsBack) {
    startWithSupplicant();
    reportLinkUp("Home");
    reportBssList({{"Cafe", -50, SecurityMode::none}});
    std::string seen;
    engine->onNetworksListChanged([&seen, ending = engine.get()] {
        seen = ending->networks().front().ssid + ' ' + ending->connectionInfo().ssid;
    });
    engine.reset();
    EXPECT_EQ(seen, "Cafe Home");
}

TEST_F(IdlePass, IdlePassPublishesConnectionThenListThenSaves) {
    startWithSupplicant();
    std::vector<std::string> order;
    engine->onConnectionInfoChanged([&] { order.emplace_back("connection"); });
    engine->onNetworksListChanged([&] { order.emplace_back("networks"); });
    stack->onCall = [&](const std::string& call) { order.push_back(call); };
    engine->forgetNetwork("Home");
    communicator->runTasks();
    reportBssList({{"Cafe", -50, SecurityMode::none}});
    reportLinkUp("Home");
    order.clear();
    communicator->runIdlePass();
    EXPECT_EQ(order, (Calls{timerOn, "connection", "networks", saving}));
}

TEST_F(IdlePass, IdlePassWithoutChangesHasNoEffect) {
    startWithSupplicant();
    EXPECT_EQ(communicator->runIdlePass(), std::nullopt);
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    EXPECT_TRUE(log.records().empty());
    EXPECT_EQ(takeGaugeReports(), GaugeReports{});
}

TEST_F(IdlePass, IdlePassReturnsTheRestOfTheAttemptsTimeout) {
    startWithSupplicant();
    engine->connectConfigured("Home");
    EXPECT_EQ(runUntilIdle(), 2000ms);
    clock->advance(1500ms);
    EXPECT_EQ(communicator->runIdlePass(), 500ms);
    reportScanning(true);
    EXPECT_EQ(communicator->runIdlePass(), std::nullopt);
    reportScanning(false);
    EXPECT_EQ(communicator->runIdlePass(), 2000ms);
    clock->advance(2s);
    EXPECT_EQ(communicator->runIdlePass(), std::nullopt) << "the attempt was given up";
}

TEST_F(IdlePass, FailedSaveIsNotRetried) {
    startWithSupplicant();
    stack->failing = {"saveNetworkConfigurationSync"};
    engine->forgetNetwork("Home");
    communicator->runTasks();
    takeCalls();
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(), Calls{"saveNetworkConfigurationSync fails"});
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(), Calls{});
}

}  // namespace
}  // namespace kaz::test
