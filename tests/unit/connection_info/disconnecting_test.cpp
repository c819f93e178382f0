// Disconnecting and forgetting by the user's wish.
#include "unit/connection_info/tracker_fixture.h"

#include <optional>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class DisconnectRequest : public TrackerTest {};
class Forgetting : public TrackerTest {};

TEST_F(DisconnectRequest, IsPublishedAtOnceAsTheUsersDoing) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, KeepsTheRecordOfAnEarlierDisconnect) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(1s);
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, InventsNoRecordWhenThereWasNoConnection) {
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(published(), "disconnected '' -100");
}

TEST_F(DisconnectRequest, EndsAnAttempt) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(100ms);
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(timeLeft(), std::nullopt);
    clock->advance(10s);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 100 ms");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(DisconnectRequest, IsNotUndoneByAnOlderReportOfTheConnection) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setCurrentBss(bss("Home", -40));
    tracker.setNetworkdIsOnline(false);
    tracker.setNetworkdIsOnline(true);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, IsUndoneByANewerReportOfTheConnection) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(1ns);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connected 'Home' -50, causedByUser 'Home' @ 1000 ms");
    tracker.setNetworkdIsOnline(false);
    EXPECT_EQ(published(), "connectingIP 'Home' -50, causedByUser 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, IsUndoneByAReportOfTheSameTime) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    EXPECT_EQ(published(), "connected 'Home' -50, causedByUser 'Home' @ 1000 ms");
}

TEST_F(DisconnectRequest, StillPendingMakesALaterDropTheUsersDoing) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 3000 ms");
}

TEST_F(DisconnectRequest, AnsweredOnceDoesNotCountForTheNextDrop) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 3000 ms");
}

TEST_F(DisconnectRequest, StaysPendingWhenItsAnswerChangesNothing) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    tracker.setSupplicantStatus(SupplicantStatus::InterfaceDisabled);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 2000 ms");
}

TEST_F(DisconnectRequest, IsForgottenWhenTheUserConnects) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 2000 ms");
}

TEST_F(DisconnectRequest, IsForgottenWhenTheSupplicantSelectsANetwork) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(1s);
    tracker.setCurrentNetworkSsid("Cafe");
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Cafe' @ 2000 ms");
}

TEST_F(DisconnectRequest, IsForgottenWhenTheSupplicantVanishes) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    tracker.setSupplicantState(false);
    reportSuccess("Home");
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 2000 ms");
}

TEST_F(Forgetting, TheNetworkInUseIsADisconnect) {
    becomeConnected("Home");
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 1000 ms");
    clock->advance(1s);
    tracker.setSupplicantStatus(SupplicantStatus::Connected);
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 2000 ms")
        << "the request was pending";
}

TEST_F(Forgetting, TheNetworkBeingConnectedToEndsTheAttempt) {
    tracker.notifyAboutConnectionAttempt("Home");
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(timeLeft(), std::nullopt);
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 0 ms");
}

TEST_F(Forgetting, AnotherNetworkWhileConnectedChangesNothing) {
    becomeConnected("Home");
    tracker.notifyAboutForget("Cafe");
    tracker.notifyAboutForget("");
    EXPECT_EQ(published(), "connected 'Home' -50");
}

TEST_F(Forgetting, TheNetworkJustDroppedByTheSystemMakesTheDropTheUsersAndRenewsItsTime) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(5s);
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 6000 ms");
}

TEST_F(Forgetting, AnotherNetworkThanTheOneJustDroppedChangesNothing) {
    becomeConnected("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(5s);
    tracker.notifyAboutForget("home");
    tracker.notifyAboutForget("");
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 1000 ms");
}

TEST_F(Forgetting, TheNetworkThatTheUserDisconnectedKeepsTheTimeOfThat) {
    becomeConnected("Home");
    tracker.notifyAboutDisconnect();
    clock->advance(5s);
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 1000 ms");
}

TEST_F(Forgetting, AnythingInAFreshTrackerChangesNothing) {
    tracker.notifyAboutForget("Home");
    tracker.notifyAboutForget("");
    EXPECT_EQ(published(), "disconnected '' 0");
}

TEST_F(Forgetting, TwoEmptyNamesAreEqual) {
    becomeConnecting("");
    tracker.notifyAboutForget("");
    EXPECT_EQ(published(), "disconnected '' -50, causedByUser '' @ 1000 ms")
        << "the BSS without a name has the name of a disconnected record, and lends it its signal";
}

}  // namespace
}  // namespace kaz::test
