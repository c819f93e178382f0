#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>

#include <atomic>
#include <vector>

#include "support/hand_driven_bus/hand_driven_bus.h"
#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

using std::chrono::seconds;

// A call times out after 10 s. A cancelled call ends before, also on a busy machine.
constexpr seconds lessThanACall{8};

// What the end of a loop does about peers that never answer.
class EventLoopShutdown : public LoopTest {
  protected:
    void SetUp() override { countIdlePasses(idlePasses); }

    steady_clock::duration destroy() {
        const auto from = steady_clock::now();
        end();
        return steady_clock::now() - from;
    }

    // Whether one of three new loops ends within the limit. `endOfOne` starts a loop and returns how long its end took.
    // On a busy machine a loop may have to wait for the processor.
    bool oneOfThreeEndsWithin(milliseconds limit, const std::function<steady_clock::duration()>& endOfOne) {
        for (int loops = 0; loops < 3 && !HasFailure(); ++loops) {
            loop = std::make_unique<dbus::EventLoop>();
            SetUp();
            if (endOfOne() < limit) {
                return true;
            }
        }
        return false;
    }

    // A task that calls a peer that never answers.
    void pushHungCall() {
        loop->pushTaskAsync([this] {
            EXPECT_EQ(callPeer("Ignore"), nullptr);
            passesAtTheEndOfTheCall = idlePasses.value();
            ++hungCalls;
        });
    }

    pid_t busDaemon() {
        return onLoop([this] {
            ucred credentials{};
            socklen_t size = sizeof credentials;
            ::getsockopt(sd_bus_get_fd(loop->getSdBusHandle()), SOL_SOCKET, SO_PEERCRED, &credentials, &size);
            return credentials.pid;
        });
    }

    // Signals until the connection, to a bus that does not read, can take no more. Their number.
    std::size_t fillTheConnection() {
        const std::string large(1 << 20, 'x');
        std::size_t sent = 0;
        uint64_t queued = 0;
        while (queued < 2 && sd_bus_emit_signal(loop->getSdBusHandle(), peerPath, peerInterface, "Changed",
                                                "s", large.c_str()) >= 0) {
            ++sent;
            sd_bus_get_n_queued_write(loop->getSdBusHandle(), &queued);
        }
        EXPECT_GE(queued, 2U) << "the connection was to be full";
        return sent;
    }

    Counter idlePasses;
    Counter hungCalls;
    std::size_t passesAtTheEndOfTheCall = 0;
};

TEST_F(EventLoopShutdown, IsImmediateWhenNothingHangs) {
    const auto endOfOne = [this] {
        const Running running = start();
        EXPECT_TRUE(fallsAsleep(loopThread()));
        return destroy();
    };
    EXPECT_TRUE(oneOfThreeEndsWithin(milliseconds(900), endOfOne));
}

TEST_F(EventLoopShutdown, GivesTheCallInFlightASecondAndRunsTheLastIdlePass) {
    BusPeer peer{peerName};
    Counter never;
    const Running running = start();
    pushHungCall();
    loop->pushTaskAsync([&] { ++never; });
    ASSERT_TRUE(peer.waitForCall("Ignore()"));
    const auto elapsed = destroy();
    EXPECT_GE(elapsed, milliseconds(900));
    EXPECT_LT(elapsed, lessThanACall);
    EXPECT_EQ(hungCalls.value(), 1U);
    EXPECT_EQ(idlePasses.value(), passesAtTheEndOfTheCall + 1);
    EXPECT_EQ(never.value(), 0U);
    EXPECT_TRUE(log.texts(spdlog::level::err).empty());
}

// The first stop counts: a second one does not restart the time.
TEST_F(EventLoopShutdown, CountsTheSecondFromTheStop) {
    BusPeer peer{peerName};
    const auto endOfOne = [&] {
        const Running running = start();
        const std::size_t calls = peer.calls().size();
        pushHungCall();
        EXPECT_TRUE(eventually([&] { return peer.calls().size() > calls; }));
        const auto stopped = steady_clock::now();
        loop->stopEventLoopAsync();
        EXPECT_TRUE(eventually([&] { return steady_clock::now() - stopped > milliseconds(900); }));
        loop->stopEventLoopAsync();
        return destroy();
    };
    EXPECT_TRUE(oneOfThreeEndsWithin(milliseconds(950), endOfOne));
}

TEST_F(EventLoopShutdown, FailsCallsOfTheTaskAndOfTheLastIdlePassTooAfterTheSecond) {
    BusPeer peer{peerName};
    const Running running = start();
    onLoop([this] {
        loop->setIdleTaskSync([this]() -> std::optional<milliseconds> {
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(callPeer("Ignore"), nullptr);
            }
            ++idlePasses;
            return std::nullopt;
        });
    });
    ASSERT_TRUE(peer.waitForCall("Ignore()"));
    const auto elapsed = destroy();
    EXPECT_GE(elapsed, milliseconds(900));
    EXPECT_LT(elapsed, lessThanACall);
    EXPECT_GE(idlePasses.value(), 2U);
}

TEST_F(EventLoopShutdown, LetsTheLastIdlePassMakeItsCalls) {
    BusPeer peer{peerName};
    std::atomic<bool> replied = false;
    const Running running = start();
    onLoop([&] {
        loop->setIdleTaskSync([&]() -> std::optional<milliseconds> {
            replied = callPeer("Set") != nullptr;
            return std::nullopt;
        });
        loop->stopEventLoopAsync();
    });
    end();
    EXPECT_TRUE(replied);
    EXPECT_EQ(peer.calls(), (std::vector<std::string>{"Set()"}));
}

TEST_F(EventLoopShutdown, SendsWhatIsStillQueued) {
    std::promise<std::size_t> sent;
    BusPeer peer;
    peer.receive(changed);
    const Running running = start();
    const pid_t daemon = busDaemon();
    ASSERT_GT(daemon, 0);
    onLoop([&] {
        loop->setIdleTaskSync([&]() -> std::optional<milliseconds> {
            ::kill(daemon, SIGSTOP);
            sent.set_value(fillTheConnection());
            return std::nullopt;
        });
        loop->stopEventLoopAsync();
    });
    const std::size_t count = sent.get_future().get();
    ::kill(daemon, SIGCONT);
    // Before the destructor sets its limit.
    EXPECT_TRUE(eventually([&] { return peer.received() == count; }));
}

TEST_F(EventLoopShutdown, TakesASecondWhenTheBusItselfHangs) {
    const Running running = start();
    const pid_t daemon = busDaemon();
    ASSERT_GT(daemon, 0);
    onLoop([&] {
        ::kill(daemon, SIGSTOP);
        fillTheConnection();
    });
    const auto elapsed = destroy();
    EXPECT_GE(elapsed, milliseconds(900));
    EXPECT_LT(elapsed, lessThanACall);
    EXPECT_GE(idlePasses.value(), 1U);
}

TEST_F(EventLoopShutdown, TakesASecondWhenTheBusDoesNotLetTheLoopIn) {
    HandDrivenBus broker;
    Counter never;
    loop->pushTaskAsync([&] { ++never; });
    const Running running = start();
    ASSERT_TRUE(broker.hears());
    const auto elapsed = destroy();
    EXPECT_LT(elapsed, lessThanACall);
    EXPECT_EQ(never.value(), 0U);
    EXPECT_EQ(idlePasses.value(), 1U);
}

TEST_F(EventLoopShutdown, TakesASecondAlsoWhenItIsAskedForBeforeTheLoopConnects) {
    HandDrivenBus broker;
    loop->startEventLoopAsync();
    EXPECT_LT(destroy(), lessThanACall);
}

TEST_F(EventLoopShutdown, WaitsForATaskThatTakesLongerThanASecond) {
    std::atomic<bool> finished = false;
    Counter entered;
    const Running running = start();
    loop->pushTaskAsync([&] {
        ++entered;
        std::this_thread::sleep_for(milliseconds(1300));
        finished = true;
    });
    ASSERT_TRUE(entered.reaches(1));
    destroy();
    EXPECT_TRUE(finished);
}

// The bus itself forgets the subscriptions of a client that leaves.
TEST_F(EventLoopShutdown, TellsTheBusOfNoSubscription) {
    HandDrivenBus broker;
    loop->startEventLoopAsync();
    ASSERT_TRUE(broker.letIn());
    loop->pushTaskAsync([this] {
        loop->registerSignalHandlerSync(peerName, peerPath, peerInterface, "Changed", false,
                                        [](dbus::MessageDecoder&) {});
    });
    EXPECT_EQ(broker.answer(1), std::vector<std::string>{"AddMatch"});
    destroy();
    EXPECT_EQ(broker.answer(2), std::vector<std::string>{"Disconnected"});
}

}  // namespace
}  // namespace kaz::test
