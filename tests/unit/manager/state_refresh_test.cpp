// The state that is read again when reports leave it open.
#include "unit/manager/engine_fixture.h"

#include <gmock/gmock.h>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class StateRefresh : public EngineWithSupplicant {
  protected:
    // The supplicant is joining the network already, so it has reported the BSS before.
    void connectWhileJoining() {
        reportBss("Home");
        reportStatus(SupplicantStatus::Connecting);
        clock->advance(1ms);
        connectTo("Home");
        reportStatus(SupplicantStatus::Connecting);
        runUntilIdle();
        forget();
    }
};

TEST_F(StateRefresh, LinkToABssReportedBeforeTheAttemptIsReadAgain) {
    connectWhileJoining();
    communicator->onRefresh = [&] {
        reportBss("Home");
        reportStatus(SupplicantStatus::Connected);
    };
    reportStatus(SupplicantStatus::Connected);
    EXPECT_EQ(takeCalls(), Calls{posting});
    runUntilIdle();
    EXPECT_THAT(state(), testing::StartsWith(R"(status=connectingIP, ssid="Home")"));
    EXPECT_EQ(takeCalls().front(), "refreshSync");
}

// Otherwise the report of its network would start another attempt.
TEST_F(StateRefresh, AttemptThatHasEndedMeanwhileIsNotReadAgain) {
    connectWhileJoining();
    reportStatus(SupplicantStatus::Connected);
    reportBss("Home");
    runUntilIdle();
    EXPECT_THAT(takeCalls(), testing::Not(testing::Contains("refreshSync")));
    EXPECT_THAT(state(), testing::StartsWith(R"(status=connectingIP, ssid="Home")"));
}

// A full queue drops tasks.
TEST_F(StateRefresh, DroppedTasksArePostedAgain) {
    connectWhileJoining();
    reportStatus(SupplicantStatus::Connected);
    communicator->dropTasks();
    takeCalls();
    reportStatus(SupplicantStatus::Connected);
    EXPECT_EQ(takeCalls(), Calls{posting});
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{"refreshSync"});
    reportStatus(SupplicantStatus::Disconnected);
    runUntilIdle();
    communicator->scanningDoneHandler(true);
    runUntilIdle();
    communicator->dropTasks();
    takeCalls();
    runUntilIdle();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{posting, "refreshBssListSync"}));
}

TEST_F(StateRefresh, ReadingThatTellsNothingIsNotRepeatedAtOnce) {
    connectWhileJoining();
    communicator->onRefresh = [&] { reportStatus(SupplicantStatus::Connected); };
    reportStatus(SupplicantStatus::Connected);
    runUntilIdle();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{posting, "refreshSync"}));
}

TEST_F(StateRefresh, AttemptThatStandsStillIsReadAgainAtTheSignalPoll) {
    connectWhileJoining();
    clock->advance(9999ms);
    communicator->expireTimer();
    EXPECT_EQ(takeCalls(), Calls{"signalPollSync"});
    clock->advance(1ms);
    communicator->onRefresh = [&] { reportStatus(SupplicantStatus::Disconnected); };
    communicator->expireTimer();
    EXPECT_EQ(takeCalls(), (Calls{"signalPollSync", posting}));
    runUntilIdle();
    EXPECT_EQ(takeCalls().front(), "refreshSync");
    EXPECT_THAT(state(), testing::StartsWith("status=disconnected"));
}

TEST_F(StateRefresh, NetworksOfAnotherClientAreListedAgainOnce) {
    reportBssList({{"Home", -50, SecurityMode::none}});
    stack->configure("Home");
    forget();
    communicator->configuredNetworksChangedHandler();
    communicator->configuredNetworksChangedHandler();
    runUntilIdle();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), (Calls{posting, listing}));
    ASSERT_EQ(engine->networks().size(), 1U);
    EXPECT_TRUE(engine->networks().front().configured);
}

TEST_F(StateRefresh, NetworksOfAnotherClientAreNotListedOnceTheSupplicantIsDetached) {
    communicator->configuredNetworksChangedHandler();
    runUntilIdle();
    detachSupplicant();
    takeCalls();
    runUntilIdle();
    EXPECT_THAT(takeCalls(), testing::Not(testing::Contains(listing)));
}

TEST_F(StateRefresh, NetworksOfAnotherClientAreListedAfterTheAttempt) {
    connectTo("Home");
    forget();
    communicator->configuredNetworksChangedHandler();
    runUntilIdle();
    EXPECT_THAT(takeCalls(), testing::Not(testing::Contains(listing)));
    reportStatus(SupplicantStatus::Connecting);
    reportStatus(SupplicantStatus::Disconnected);
    runUntilIdle();
    takeCalls();
    runUntilIdle();
    EXPECT_EQ(takeCalls(), Calls{listing});
}

TEST_F(StateRefresh, OrdinaryAttemptIsNotReadAgain) {
    connectTo("Home");
    takeCalls();
    reportStatus(SupplicantStatus::Connecting);
    reportBss("Home");
    reportStatus(SupplicantStatus::Connected);
    runUntilIdle();
    clock->advance(1min);
    communicator->expireTimer();
    EXPECT_THAT(takeCalls(), testing::Not(testing::Contains("refreshSync")));
}

}  // namespace
}  // namespace kaz::test
