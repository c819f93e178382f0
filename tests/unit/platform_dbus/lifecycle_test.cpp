#include "base/non_copyable.h"
#include "base/temporary_folder.h"
#include "support/files/files.h"
#include "support/process/child_process.h"
#include "unit/platform_dbus/loop_fixture.h"

#include <signal.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <exception>
#include <vector>

namespace kaz::test {
namespace {

class EventLoopLifecycle : public LoopTest {
  protected:
    // A task that counts its run, and something that shows whether the task still exists.
    std::weak_ptr<int> pushWitness() {
        const auto held = std::make_shared<int>();
        loop->pushTaskAsync([this, held] { ++ran; });
        return held;
    }

    Counter ran;
};

TEST_F(EventLoopLifecycle, DestroyedWithoutAStartDestroysItsTasks) {
    const auto task = pushWitness();
    EXPECT_FALSE(task.expired());
    end();
    EXPECT_TRUE(task.expired());
    EXPECT_EQ(ran.value(), 0U);
}

TEST_F(EventLoopLifecycle, StoppedBeforeTheStartNeverRunsAnything) {
    Counter idlePasses;
    countIdlePasses(idlePasses);
    const auto task = pushWitness();
    loop->stopEventLoopAsync();
    loop->startEventLoopAsync();
    end();
    EXPECT_TRUE(task.expired());
    EXPECT_EQ(ran.value(), 0U);
    EXPECT_EQ(idlePasses.value(), 0U);
}

TEST_F(EventLoopLifecycle, StartedTwiceHasOneThread) {
    const Running running = start();
    const pid_t first = loopThread();
    loop->startEventLoopAsync();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(loopThread(), first);
    }
}

TEST_F(EventLoopLifecycle, MayBeStoppedTwice) {
    const Running running = start();
    onLoop([] {});
    loop->stopEventLoopAsync();
    loop->stopEventLoopAsync();
    end();
    EXPECT_TRUE(log.texts(spdlog::level::err).empty());
}

TEST_F(EventLoopLifecycle, MayBeStoppedFromATask) {
    const Running running = start();
    onLoop([&] { loop->stopEventLoopAsync(); });
    EXPECT_TRUE(pushWitness().expired());
    end();
    EXPECT_EQ(ran.value(), 0U);
}

TEST_F(EventLoopLifecycle, DropsTasksPushedAfterTheStopQuietly) {
    const Running running = start();
    onLoop([] {});
    loop->stopEventLoopAsync();
    log.clear();
    EXPECT_TRUE(pushWitness().expired());
    end();
    EXPECT_EQ(ran.value(), 0U);
    EXPECT_TRUE(log.records().empty());
}

TEST_F(EventLoopLifecycle, FinishesTheTaskInProgressDropsTheRestAndRunsTheIdleTaskOnceMore) {
    Gate gate;
    std::vector<std::string> order;
    loop->setIdleTaskSync([&]() -> std::optional<milliseconds> {
        order.emplace_back("idle");
        return std::nullopt;
    });
    loop->pushTaskAsync([&] {
        gate.pass();
        order.emplace_back("task");
    });
    const auto queued = pushWitness();
    const Running running = start();
    gate.waitForTask();
    loop->stopEventLoopAsync();
    EXPECT_FALSE(queued.expired());
    gate.open();
    end();
    EXPECT_EQ(order, (std::vector<std::string>{"task", "idle"}));
    EXPECT_TRUE(queued.expired());
    EXPECT_EQ(ran.value(), 0U);
}

// Pushes a task in its destructor, as an object with a last step may do.
struct PushesWhenItDies : private NonCopyable {
    PushesWhenItDies(dbus::EventLoop& target, std::atomic<pid_t>& where) : loop(target), destroyedOn(where) {}
    ~PushesWhenItDies() {
        destroyedOn = ::gettid();
        loop.pushTaskAsync([] { ADD_FAILURE() << "runs after the stop"; });
    }
    dbus::EventLoop& loop;
    std::atomic<pid_t>& destroyedOn;
};

TEST_F(EventLoopLifecycle, DestroysDroppedTasksOnTheLoopThreadAndTheyMayPushAgain) {
    std::atomic<pid_t> destroyedOn = 0;
    Gate gate;
    const Running running = start();
    const pid_t thread = loopThread();
    loop->pushTaskAsync([&] { gate.pass(); });
    loop->pushTaskAsync([held = std::make_shared<PushesWhenItDies>(*loop, destroyedOn)] {});
    gate.waitForTask();
    loop->stopEventLoopAsync();
    gate.open();
    end();
    EXPECT_EQ(destroyedOn, thread);
}

TEST_F(EventLoopLifecycle, LetsWhatItHoldsPushWhileItDies) {
    std::atomic<pid_t> destroyedOn = 0;
    const auto held = [&] { return std::make_shared<PushesWhenItDies>(*loop, destroyedOn); };
    loop->setIdleTaskSync([h = held()]() -> std::optional<milliseconds> { return std::nullopt; });
    loop->setTimerCompletedTask([h = held()] {});
    loop->registerSignalHandlerSync(peerName, peerPath, peerInterface, "Changed", false,
                                    [h = held()](dbus::MessageDecoder&) {});
    loop->pushTaskAsync([h = held()] {});
    end();
    EXPECT_EQ(destroyedOn, ::gettid());
}

TEST_F(EventLoopLifecycle, LeavesTheBusToTheParentWhenAForkedChildDestroysIt) {
    BusPeer peer{peerName};
    const Running running = start();
    EXPECT_TRUE(callFromLoop("Echo", "before"));
    ChildProcess child([this] {
        loop->stopEventLoopAsync();
        loop.reset();
        return 7;
    });
    EXPECT_EQ(child.wait(), 7);
    EXPECT_TRUE(callFromLoop("Echo", "after"));
    EXPECT_TRUE(log.records().empty());
}

// It would have to wait for itself. The logger writes only when its buffer is full, or when it is flushed.
TEST_F(EventLoopLifecycle, DestroyedOnItsOwnThreadAbortsTheProcessWithAnErrorInTheLog) {
    const TemporaryFolder folder;
    const std::string file = folder / "log";
    ChildProcess child([&] {
        const rlimit noCoreFile{};
        ::setrlimit(RLIMIT_CORE, &noCoreFile);
        std::set_terminate([] { ::_exit(1); });  // waiting for itself would end the loop so
        spdlog::set_default_logger(spdlog::basic_logger_st("file", file));
        loop = std::make_unique<dbus::EventLoop>();  // not the parent's
        loop->pushTaskAsync([this] { end(); });
        loop->startEventLoopAsync();
        std::promise<void>().get_future().wait();
        return 0;
    });
    EXPECT_EQ(child.wait(), -SIGABRT);
    EXPECT_NE(readFile(file).find("An event loop was destroyed on its own thread"), std::string::npos);
}

TEST_F(EventLoopLifecycle, MayBeStoppedFromAnotherThreadWhileItRuns) {
    for (int i = 0; i < 20; ++i) {
        loop = std::make_unique<dbus::EventLoop>();
        loop->startEventLoopAsync();
        std::thread stopper([this] { loop->stopEventLoopAsync(); });
        const auto task = pushWitness();
        stopper.join();
        end();
        EXPECT_TRUE(task.expired());
    }
}

}  // namespace
}  // namespace kaz::test
