// Disconnecting, forgetting, and networks that the supplicant selects.
#include "unit/manager/engine_fixture.h"

#include <gmock/gmock.h>

#include <functional>
#include <utility>
#include <vector>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;
using Stored = FakeWifiStack::Network;

class Disconnect : public EngineTest {
  protected:
    void disconnectInVain() {
        stack->failing = {"disconnectSync"};
        engine->disconnect();
        runUntilIdle();
        stack->failing.clear();
    }
};

class Forget : public EngineTest {
  protected:
    void forgetNetwork(const std::string& ssid) {
        engine->forgetNetwork(ssid);
        EXPECT_EQ(takeCalls(), Calls{posting});
        communicator->runTasks();
    }
};

class NetworkSelected : public EngineWithSupplicant {};

TEST_F(Disconnect, DisconnectIsPublishedBeforeTheSupplicantIsCalled) {
    startWithSupplicant();
    becomeConnected("Home");
    engine->disconnect();
    EXPECT_EQ(takeCalls(), Calls{posting});
    std::string published;
    stack->onCall = [&](const std::string& call) {
        if (call == "disconnectSync") {
            published = state();
        }
    };
    communicator->runTasks();
    EXPECT_EQ(published, R"(status=disconnected, disconnectReason=causedByUser, disconnectssid="Home")");
    EXPECT_EQ(takeCalls(), (Calls{timerOff, "disconnectSync"}));
    EXPECT_EQ(takeCallbacks(), Callbacks{.connection = 1});
    EXPECT_EQ(log.records().front(), info("Disconnecting"));
}

TEST_F(Disconnect, DisconnectWithoutAConnectionCallsTheSupplicant) {
    startWithSupplicant();
    stack->failing = {"disconnectSync"};
    engine->disconnect();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{posting, "disconnectSync fails"}));
    EXPECT_EQ(state(), "status=disconnected, disconnectReason=unknown");
}

// A supplicant that searches refuses, goes on searching, and connects to what it finds.
TEST_F(Disconnect, RefusedDisconnectIsRepeatedWhenTheSupplicantFindsANetwork) {
    startWithSupplicant();
    disconnectInVain();
    forget();
    reportBss("Home");
    reportStatus(SupplicantStatus::Connecting);
    clock->advance(1ms);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{posting, "disconnectSync"}));
    EXPECT_EQ(log.records().front(), info("Disconnecting again, the supplicant has found a network"));
    EXPECT_EQ(state(), R"(status=disconnected, disconnectReason=causedByUser, disconnectssid="Home")");
    reportStatus(SupplicantStatus::Disconnected);
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{timerOn}) << "carried out once";
}

TEST_F(Disconnect, RefusedDisconnectIsRepeatedWhenOnlyTheEndOfLinkSetupIsReported) {
    startWithSupplicant();
    disconnectInVain();
    takeCalls();
    reportBss("Home");
    reportStatus(SupplicantStatus::Connected);
    clock->advance(1ms);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{posting, "disconnectSync"}));
}

// The link was lost, but its report comes only after the request.
TEST_F(Disconnect, RefusedDisconnectIsRepeatedAlsoWhenTheLossOfTheLinkWasNotKnown) {
    startWithSupplicant();
    becomeConnected("Home");
    communicator->onRefresh = [&] { reportStatus(SupplicantStatus::Disconnected); };
    disconnectInVain();
    takeCalls();
    clock->advance(1ms);
    reportBss("Home");
    reportStatus(SupplicantStatus::Connecting);
    clock->advance(1ms);
    runUntilIdle();
    EXPECT_THAT(takeCalls(), testing::IsSupersetOf({posting, std::string("disconnectSync")}));
    EXPECT_THAT(state(), testing::StartsWith("status=disconnected"));
}

TEST_F(Disconnect, RefusedDisconnectIsRepeatedAlsoWhenTheStateCouldNotBeRead) {
    startWithSupplicant();
    becomeConnected("Home");
    disconnectInVain();
    takeCalls();
    clock->advance(1ms);
    reportStatus(SupplicantStatus::Disconnected);
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    EXPECT_THAT(takeCalls(), testing::Contains("disconnectSync"));
}

// The supplicant's signal of our own selection may arrive after the later request.
TEST_F(Disconnect, RefusedDisconnectIsRepeatedAlsoAfterTheSignalOfOurSelection) {
    startWithSupplicant();
    connectTo("Home");
    disconnectInVain();
    communicator->networkSelectedHandler("Home");
    runUntilIdle();
    takeCalls();
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    EXPECT_THAT(takeCalls(), testing::Contains("disconnectSync"));
}

TEST_F(Disconnect, LinkThatAFailedDisconnectLeftUpIsShown) {
    startWithSupplicant();
    becomeConnected("Home");
    communicator->onRefresh = [&] {
        reportBss("Home");
        reportStatus(SupplicantStatus::Connected);
    };
    forget();
    disconnectInVain();
    runUntilIdle();
    EXPECT_THAT(state(), testing::StartsWith(R"(status=connected, ssid="Home")"));
    EXPECT_THAT(takeCalls(),
                testing::IsSupersetOf({std::string("disconnectSync fails"), std::string("refreshSync")}));
}

TEST_F(Disconnect, RefusedDisconnectIsNotRepeatedAfterALaterRequest) {
    startWithSupplicant();
    const std::vector<std::pair<const char*, std::function<void()>>> requests{
        {"connect", [&] { connectTo("Home"); }},
        {"connectConfigured", [&] { engine->connectConfigured("Home"); }},
        {"another client", [&] { communicator->networkSelectedHandler("Home"); }},
        {"a new supplicant", [&] { detachSupplicant(), attachSupplicant(); }},
    };
    for (const auto& [name, request] : requests) {
        disconnectInVain();
        request();
        runUntilIdle();
        takeCalls();
        reportStatus(SupplicantStatus::Connecting);
        runUntilIdle();
        EXPECT_THAT(takeCalls(), testing::Not(testing::Contains("disconnectSync"))) << name;
        reportStatus(SupplicantStatus::Disconnected);
    }
}

TEST_F(Disconnect, BurstOfReportsRepeatsARefusedDisconnectOnce) {
    startWithSupplicant();
    disconnectInVain();
    takeCalls();
    reportStatus(SupplicantStatus::Connecting);
    reportStatus(SupplicantStatus::Connecting);
    reportStatus(SupplicantStatus::Connected);
    EXPECT_EQ(takeCalls(), Calls{posting});
}

TEST_F(Disconnect, RefusedDisconnectIsNotRepeatedAfterASelectionInTheMeantime) {
    startWithSupplicant();
    disconnectInVain();
    reportStatus(SupplicantStatus::Connecting);  // posts the task
    communicator->networkSelectedHandler("Home");
    EXPECT_THAT(callsUntilIdle(), testing::Not(testing::Contains("disconnectSync")));
}

TEST_F(Disconnect, FailedDisconnectOfALinkIsNotRepeated) {
    startWithSupplicant();
    becomeConnected("Home");
    stack->failing = {"disconnectSync"};
    engine->disconnect();
    runUntilIdle();
    takeCalls();
    reportStatus(SupplicantStatus::Connecting);
    runUntilIdle();
    EXPECT_THAT(takeCalls(), testing::Not(testing::Contains("disconnectSync fails")));
}

TEST_F(Disconnect, DisconnectKeepsTheConfiguration) {
    stack->configure("Home");
    startWithSupplicant();
    becomeConnected("Home");
    engine->disconnect();
    runUntilIdle();
    EXPECT_EQ(stack->networks.size(), 1U);
}

TEST_F(Forget, ForgetRemovesTheConfigurationAndSaves) {
    stack->configure("Cafe");
    stack->configure("Home");
    startWithSupplicant();
    forgetNetwork("Home");
    EXPECT_EQ(takeCalls(), (Calls{listing, "removeSync(2)", listing}));
    EXPECT_EQ(stack->networks, (std::vector<Stored>{{1, "Cafe", true, 0}}));
    EXPECT_EQ(log.records(), Records{info(R"(Forgetting ssid="Home")")});
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(), Calls{saving});
}

TEST_F(Forget, ForgetRemovesBothOfTwoConfigurations) {
    stack->configure("Home");
    stack->configure("Cafe");
    stack->configure("Home");
    stack->configure(std::nullopt);
    startWithSupplicant();
    forgetNetwork("Home");
    EXPECT_EQ(takeCalls(), (Calls{listing, "removeSync(1)", "removeSync(3)", listing}));
    EXPECT_EQ(stack->networks.size(), 2U);
}

TEST_F(Forget, FailedRemovalDoesNotStopTheForget) {
    stack->configure("Home");
    stack->configure("Home");
    stack->failing = {"removeSync"};
    startWithSupplicant();
    forgetNetwork("Home");
    EXPECT_EQ(takeCalls(), (Calls{listing, "removeSync(1) fails", "removeSync(2) fails", listing}));
    EXPECT_TRUE(log.texts(spdlog::level::err).empty()) << "it was found";
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(), Calls{saving});
}

TEST_F(Forget, LinkThatAFailedForgetLeftUpIsShown) {
    stack->configure("Home");
    startWithSupplicant();
    communicator->onRefresh = [&] {
        reportBss("Home");
        reportStatus(SupplicantStatus::Connected);
    };
    for (const std::string call : {"removeSync", "getAllConfiguredNetworksSync"}) {
        becomeConnected("Home");
        stack->failing = {call};
        engine->forgetNetwork("Home");
        runUntilIdle();
        EXPECT_THAT(state(), testing::StartsWith(R"(status=connected, ssid="Home")")) << call;
    }
}

TEST_F(Forget, FailedForgetOfAnotherNetworkDoesNotReadTheLinkAgain) {
    stack->configure("Cafe");
    startWithSupplicant();
    becomeConnected("Home");
    stack->failing = {"removeSync"};
    forgetNetwork("Cafe");
    EXPECT_THAT(takeCalls(), testing::Not(testing::Contains("refreshSync")));
}

TEST_F(Forget, ForgettingAnUnknownNetworkLogsAnErrorAndSaves) {
    stack->configure("Cafe");
    stack->configure(std::nullopt);
    startWithSupplicant();
    forgetNetwork("Home");
    EXPECT_EQ(takeCalls(), Calls{listing});
    EXPECT_EQ(log.records(),
              (Records{info(R"(Forgetting ssid="Home")"),
                       error(R"(Unable to remove network, configuration not found. ssid="Home")")}));
    communicator->runIdlePass();
    EXPECT_EQ(takeCalls(), Calls{saving});
}

TEST_F(Forget, ForgettingTheNetworkInUsePublishesADisconnectFirst) {
    stack->configure("Home");
    startWithSupplicant();
    becomeConnected("Home");
    std::string published;
    stack->onCall = [&](const std::string& call) {
        if (call == "getAllConfiguredNetworksSync" && published.empty()) {
            published = state();
        }
    };
    forgetNetwork("Home");
    EXPECT_EQ(published, R"(status=disconnected, disconnectReason=causedByUser, disconnectssid="Home")");
    EXPECT_EQ(takeCalls(), (Calls{timerOff, listing, "removeSync(1)", listing}));
}

TEST_F(Forget, ForgettingADroppedNetworkMakesTheDropByUser) {
    startWithSupplicant();
    becomeConnected("Home");
    reportStatus(SupplicantStatus::Disconnected);
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=disconnected, disconnectReason=causedBySystem, disconnectssid="Home")");
    forget();
    forgetNetwork("Home");
    EXPECT_EQ(state(), R"(status=disconnected, disconnectReason=causedByUser, disconnectssid="Home")");
}

TEST_F(Forget, ForgottenNetworkInRangeIsListedAsNotConfigured) {
    stack->configure("Home");
    startWithSupplicant();
    reportBssList({{"Home", -50, SecurityMode::rsnPsk}});
    runUntilIdle();
    ASSERT_TRUE(engine->networks().front().configured);
    forget();
    forgetNetwork("Home");
    runUntilIdle();
    EXPECT_FALSE(engine->networks().front().configured);
    EXPECT_EQ(takeCallbacks(), Callbacks{.networks = 1});
}

TEST_F(Forget, ForgettingAnEmptySsidHasNoEffect) {
    startWithSupplicant();
    engine->forgetNetwork("");
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_EQ(communicator->queuedTasks(), 0U);
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{});
    EXPECT_TRUE(log.records().empty());
}

TEST_F(NetworkSelected, SelectionBySupplicantBeginsAnAttempt) {
    communicator->networkSelectedHandler("Home");
    EXPECT_EQ(log.records(), Records{debug(R"(NetworkSelected is ssid="Home")")});
    EXPECT_EQ(state(), "status=disconnected, disconnectReason=unknown") << "not before the idle pass";
    EXPECT_EQ(runUntilIdle(), 2000ms);
    EXPECT_EQ(state(), R"(status=connectingWifi, ssid="Home")");
    EXPECT_EQ(takeCalls(), Calls{timerOn});
}

TEST_F(NetworkSelected, SelectionWithoutAnSsidHasNoEffect) {
    becomeConnected("Home");
    communicator->networkSelectedHandler(std::nullopt);
    EXPECT_TRUE(log.records().empty());
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_EQ(takeCallbacks(), Callbacks{});
}

TEST_F(NetworkSelected, SelectionOfTheRequestedNetworkKeepsTheAttempt) {
    engine->connectConfigured("Home");
    runUntilIdle();
    clock->advance(500ms);
    communicator->networkSelectedHandler("Home");
    EXPECT_EQ(runUntilIdle(), 1500ms);
}

}  // namespace
}  // namespace kaz::test
