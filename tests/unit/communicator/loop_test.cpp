// The event loop seen through the communicator, and its end.
#include "unit/communicator/communicator_fixture.h"

#include <atomic>

namespace kaz::wifi {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class Loop : public CommunicatorTest {
  protected:
    void noteTask(const std::string& name) {
        communicator->pushTaskAsync_([this, name] { calls.add(name); });
    }
};

TEST_F(Loop, UnitIsReadBeforeTheFirstTask) {
    noteTask("first");
    noteTask("second");
    start("inactive");
    EXPECT_THAT(calls.calls(), ElementsAre(testing::HasSubstr("LoadUnit"), testing::HasSubstr("Subscribe"),
                                           testing::HasSubstr("ActiveState"), "first", "second"));
}

TEST_F(Loop, IdleTaskRuns) {
    communicator->setIdleTask([this]() -> std::optional<milliseconds> {
        calls.add("idle");
        return std::nullopt;
    });
    start("inactive");
    EXPECT_TRUE(calls.waitForCall("idle"));
}

TEST_F(Loop, TimerTaskRunsUntilDisarmed) {
    communicator->setTimerCompletedTask([this] { calls.add("timer"); });
    communicator->configureTimerSync(true, milliseconds(1));
    start("inactive");
    EXPECT_TRUE(
        calls.waitFor([](const auto& seen) { return std::count(seen.begin(), seen.end(), "timer") >= 2; }));
    onLoop([&] { communicator->configureTimerSync(false, milliseconds(1)); });
    forget();
    onLoop([] {});
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(Loop, StopDropsQueuedAndLaterTasks) {
    start("inactive");
    onLoop([&] {
        noteTask("dropped");
        communicator->stopEventLoop();
        noteTask("late");
    });
    communicator.reset();
    EXPECT_THAT(calls.calls(), testing::Not(testing::Contains("dropped")));
    EXPECT_THAT(calls.calls(), testing::Not(testing::Contains("late")));
}

TEST_F(Loop, DestructionEndsACallThatIsNotAnswered) {
    onSystemd("LoadUnit", noReply());
    communicator->startEventLoop();
    ASSERT_TRUE(calls.waitForCall("LoadUnit"));
    const auto before = steady_clock::now();
    communicator->stopEventLoop();
    communicator.reset();
    // Otherwise the call would wait for its timeout of 10 s.
    EXPECT_LT(steady_clock::now() - before, std::chrono::seconds(8));
}

TEST_F(Loop, DestructionWithoutStartMakesNoCall) {
    communicator.reset();
    EXPECT_THAT(calls.calls(), IsEmpty());
}

TEST_F(Loop, AnotherThreadMayAskWhetherTheSupplicantIsAttached) {
    std::atomic<bool> done = false;
    std::thread watcher([&] {
        while (!done) {
            static_cast<void>(communicator->isSupplicantOn());
            std::this_thread::yield();
        }
    });
    start("active");
    EXPECT_TRUE(communicator->isSupplicantOn());
    done = true;
    watcher.join();
}

TEST_F(Loop, EachOperationFailsWithoutABus) {
    bus.kill();
    communicator->startEventLoop();
    onLoop([&] {
        EXPECT_FALSE(communicator->startStopSupplicantSync(true));
        EXPECT_THAT(communicator->eapMethodsSync(), IsEmpty());
        EXPECT_FALSE(communicator->configuredNetworks().setPrioritySync("/n", 1));
        EXPECT_FALSE(communicator->scanSync());
    });
    EXPECT_FALSE(communicator->isSupplicantOn());
    EXPECT_EQ(log.texts(spdlog::level::err).size(), 1U);
}

}  // namespace
}  // namespace kaz::wifi
