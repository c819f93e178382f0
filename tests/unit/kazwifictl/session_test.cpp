#include "kazwifictl/session/session.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "kazwifictl/text/failure.h"
#include "unit/kazwifictl/fake_world.h"

namespace kaz::ctl {
namespace {

using std::chrono::milliseconds;
using test::connectedTo;
using test::FakeWorld;
using test::network;
using wifi::SecurityMode;

constexpr milliseconds generous{20000};

class SessionTest : public testing::Test {
  protected:
    FakeWorld world;
    Interrupts interrupts;
};

TEST_F(SessionTest, StartsWhenTheSupplicantIsBeingFollowed) {
    Session session(interrupts);
    EXPECT_EQ(session.start(generous, true), Session::Start::running);
    EXPECT_TRUE(session.latest().running);
}

TEST_F(SessionTest, KnowsThatTheSupplicantDoesNotRunWithoutWaitingForIt) {
    world.running = false;
    world.storedChoice = false;
    Session session(interrupts);
    const auto before = Clock::now();
    EXPECT_EQ(session.start(generous, true), Session::Start::notRunning);
    EXPECT_LT(Clock::now() - before, generous);
}

TEST_F(SessionTest, WaitsForASupplicantThatIsSwitchedOnOnlyWhenPatient) {
    world.running = false;
    Session session(interrupts);
    EXPECT_EQ(session.start(milliseconds(400), false), Session::Start::notRunning);
    const auto before = Clock::now();
    EXPECT_EQ(session.start(milliseconds(400), true), Session::Start::notRunning);
    EXPECT_GE(Clock::now() - before, milliseconds(400));
}

TEST_F(SessionTest, HasTheWholeFirstStateAfterItsEnd) {
    world.slowness = milliseconds(20);  // so that start() returns before the first state is published
    world.connection = connectedTo("Home", -50);
    world.inRange = {network("Office", -60, SecurityMode::rsnPsk)};
    for (int i = 0; i < 5; ++i) {
        Session session(interrupts);
        ASSERT_EQ(session.start(generous, true), Session::Start::running);
        session.close();
        EXPECT_EQ(session.latest().connection.info.ssid, "Home");
        EXPECT_EQ(session.latest().networks.size(), 1U);
    }
}

TEST_F(SessionTest, SeesWhatIsPublishedBeforeItListens) {
    world.slowness = milliseconds(10);  // so that nothing is published before a view that would be too early
    world.inRange = {network("Office", -60, SecurityMode::rsnPsk)};
    world.whenHeard = [](wifi::Manager& manager) {
        while (manager.networks().empty()) {
            std::this_thread::yield();
        }
    };
    const Session session(interrupts);
    EXPECT_TRUE(session.latest().running);
    EXPECT_EQ(session.latest().networks.size(), 1U);
}

TEST_F(SessionTest, KnowsWhatIsInUseHoweverLateTheSupplicantIsFollowed) {
    world.followsOnceAsked = true;
    world.inRange = {network("Home", -50, SecurityMode::rsnPsk)};
    world.connection = connectedTo("Home", -50);
    for (const bool patient : {true, false}) {
        world.asked = false;
        Session session(interrupts);
        EXPECT_EQ(session.start(generous, patient), Session::Start::running);
        session.close();
        EXPECT_EQ(session.latest().connection.info.ssid, "Home");
        EXPECT_TRUE(session.latest().networks.empty());
    }
}

// This is why carriedOut() exists: ~Manager drops requests that have not begun.
TEST_F(SessionTest, LosesARequestThatHasNotBegunWhenItEnds) {
    Session session(interrupts);
    session.start(generous, true);
    world.holdsTasks = true;
    session.manager().forgetNetwork("Home");
    session.close();
    EXPECT_FALSE(world.did("forget Home"));
}

TEST_F(SessionTest, HasCarriedOutAndSavedEverythingThatWasAskedFor) {
    world.slowness = milliseconds(50);
    world.saved = {"Home", "Cafe"};
    Session session(interrupts);
    session.start(generous, true);
    for (const std::string ssid : {"Home", "Cafe"}) {
        session.manager().forgetNetwork(ssid);
        EXPECT_TRUE(session.carriedOut(generous));
        EXPECT_TRUE(world.did("forget " + ssid));
    }
    session.close();
    EXPECT_TRUE(world.did("save"));
    EXPECT_FALSE(world.did("select Home"));
}

TEST_F(SessionTest, IsToldWhatFailed) {
    world.saved = {"Home"};
    world.canSave = false;
    world.canStore = false;
    Session session(interrupts);
    session.start(generous, true);
    session.manager().forgetNetwork("Home");
    EXPECT_TRUE(session.carriedOut(generous));
    EXPECT_EQ(session.takeFailures(),
              (Session::Failures{{wifi::RequestFailure::notSaved, wifi::FailureReason::refused}}));
    session.manager().setEnabled(true);
    session.manager().forgetNetwork("Home");
    EXPECT_TRUE(session.carriedOut(generous));
    EXPECT_EQ(session.takeFailures(),
              (Session::Failures{{wifi::RequestFailure::unknownNetwork, wifi::FailureReason::none},
                                 {wifi::RequestFailure::notSaved, wifi::FailureReason::refused},
                                 {wifi::RequestFailure::choiceNotWritten, wifi::FailureReason::none}}));
    EXPECT_EQ(session.takeFailures(), Session::Failures());
}

TEST_F(SessionTest, GivesUpARequestThatTakesTooLong) {
    Session session(interrupts);
    session.start(generous, true);
    world.holdsTasks = true;
    session.manager().disconnect();
    EXPECT_FALSE(session.carriedOut(milliseconds(30)));
    world.holdsTasks = false;
}

TEST_F(SessionTest, IsReadableAsLongAsChangesWait) {
    world.connection = connectedTo("Home", -50);
    world.holdsTasks = true;
    Session session(interrupts);
    const auto readable = [&session] {
        pollfd waited{session.fd(), POLLIN, 0};
        return ::poll(&waited, 1, 0) == 1;
    };
    EXPECT_FALSE(readable());
    world.holdsTasks = false;
    session.manager().disconnect();  // after the first state, which takes two changes
    {
        std::unique_lock lock(world.mutex);
        world.changed.wait(lock, [this] { return !world.done.empty(); });
    }
    EXPECT_TRUE(readable());
    EXPECT_TRUE(session.next(Clock::now())) << "it waits already";
    EXPECT_TRUE(readable());
    session.takeAll();
    EXPECT_FALSE(readable());
    EXPECT_FALSE(session.next(Clock::now()));
}

TEST_F(SessionTest, GivesUpAWaitAtItsDeadline) {
    Session session(interrupts);
    session.start(generous, true);
    EXPECT_FALSE(session.until(Clock::now() + milliseconds(30), [](const Snapshot&) { return false; }));
}

TEST_F(SessionTest, LeavesAWaitOnASignal) {
    Session session(interrupts);
    session.start(generous, true);
    ::kill(::getpid(), SIGTERM);
    try {
        session.until(Clock::now() + generous, [](const Snapshot&) { return false; });
        FAIL() << "the signal was ignored";
    } catch (const Interrupted& interrupted) {
        EXPECT_EQ(interrupted.signal(), SIGTERM);
    }
}

TEST_F(SessionTest, KeepsSignalsAwayFromTheThreadsOfTheDevice) {
    sigset_t seen;
    ::sigemptyset(&seen);
    world.whenMade = [&](wifi::Manager&) { ::pthread_sigmask(SIG_BLOCK, nullptr, &seen); };
    const Session session(interrupts);
    EXPECT_EQ(sigismember(&seen, SIGTSTP), 1);
    EXPECT_EQ(sigismember(&seen, SIGWINCH), 1);
    sigset_t now;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &now);
    EXPECT_EQ(sigismember(&now, SIGTSTP), 0);
}

TEST(Interrupts, LetSignalsThroughAgainAtTheEnd) {
    sigset_t before;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &before);
    { const Interrupts interrupts; }
    sigset_t after;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &after);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
    }
}

}  // namespace
}  // namespace kaz::ctl
