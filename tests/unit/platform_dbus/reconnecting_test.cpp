// The bus goes away and comes back, or comes late.
#include <pthread.h>
#include <time.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "support/hand_driven_bus/hand_driven_bus.h"
#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

using dbus::MessageDecoder;
using std::chrono::milliseconds;

class EventLoopReconnecting : public LoopTest {
  protected:
    EventLoopReconnecting() {
        loop->setConnectionTaskSync([this](bool connected) {
            ++(connected ? cameBack : wentAway);
            told.emplace_back(connected ? "connected" : "lost");
        });
    }

    void registerCounting(bool temporary) {
        registerForChanged(temporary, [this](MessageDecoder&) { ++handled; });
    }

    // A peer on the bus of now sends one signal; it makes this many handlers run.
    void expectHandled(std::size_t times) {
        BusPeer peer{peerName};
        const std::size_t before = handled.value();
        peer.emit(changed, "x");
        EXPECT_TRUE(handled.reaches(before + times));
        peer.settle();
        onLoop([] {});
        EXPECT_EQ(handled.value(), before + times);
    }

    // The processor time of the loop thread so far, without waking it.
    clockid_t processorClock() {
        return onLoop([] {
            clockid_t clock{};
            EXPECT_EQ(::pthread_getcpuclockid(::pthread_self(), &clock), 0);
            return clock;
        });
    }
    static std::chrono::nanoseconds timeOf(clockid_t clock) {
        timespec time{};
        EXPECT_EQ(::clock_gettime(clock, &time), 0);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    }

    Counter cameBack;
    Counter wentAway;
    Counter handled;
    std::vector<std::string> told;  // on the loop thread
};

TEST_F(EventLoopReconnecting, SubscribesAllHandlersAgain) {
    const Running running = start();
    registerCounting(false);
    registerCounting(true);
    expectHandled(2);
    bus.restart();
    ASSERT_TRUE(cameBack.reaches(1));
    expectHandled(2);
    onLoop([this] { loop->removeTemporarySignalHandlersSync(); });
    expectHandled(1);
}

TEST_F(EventLoopReconnecting, SubscribesHandlersThatWereRegisteredMeanwhile) {
    const Running running = start();
    onLoop([] {});
    bus.kill();
    ASSERT_TRUE(wentAway.reaches(1));
    registerCounting(false);
    bus.restart();
    ASSERT_TRUE(cameBack.reaches(1));
    expectHandled(1);
}

TEST_F(EventLoopReconnecting, TellsOnceEachWay) {
    const Running running = start();
    onLoop([] {});
    for (std::size_t round = 1; round <= 3; ++round) {
        bus.kill();
        ASSERT_TRUE(wentAway.reaches(round));
        bus.restart();
        ASSERT_TRUE(cameBack.reaches(round));
    }
    EXPECT_EQ(onLoop([this] { return told; }),
              (std::vector<std::string>{"lost", "connected", "lost", "connected", "lost", "connected"}));
    EXPECT_EQ(log.texts(spdlog::level::err),
              std::vector<std::string>(3, "Lost the connection to the system bus"));
    EXPECT_EQ(log.texts(spdlog::level::info), std::vector<std::string>(3, "Connected to the system bus"));
}

TEST_F(EventLoopReconnecting, TellsOfABusThatComesAfterTheStart) {
    bus.kill();
    const Running running = start();
    registerCounting(false);
    ASSERT_EQ(log.texts(spdlog::level::err).size(), 1U);
    bus.restart();
    ASSERT_TRUE(cameBack.reaches(1));
    EXPECT_EQ(onLoop([this] { return told; }), std::vector<std::string>{"connected"});
    EXPECT_EQ(log.texts(spdlog::level::err).size(), 1U);
    expectHandled(1);
}

TEST_F(EventLoopReconnecting, TellsNothingOfTheFirstConnectionNorOfTheEnd) {
    {
        const Running running = start();
        onLoop([] {});
    }
    EXPECT_TRUE(told.empty());
}

TEST_F(EventLoopReconnecting, LetsTheTaskUseTheNewConnection) {
    loop->setConnectionTaskSync([this](bool connected) {
        EXPECT_EQ(loop->getSdBusHandle() != nullptr, connected);
        ++(connected ? cameBack : wentAway);
    });
    const Running running = start();
    onLoop([] {});
    bus.restart();
    ASSERT_TRUE(cameBack.reaches(1));
    BusPeer peer{peerName};
    EXPECT_TRUE(callFromLoop("Echo"));
}

TEST_F(EventLoopReconnecting, IsOverWhenTheLoopStops) {
    const auto before = std::chrono::steady_clock::now();
    {
        const Running running = start();
        onLoop([] {});
        bus.kill();
        ASSERT_TRUE(wentAway.reaches(1));
        // The next attempt may come in some seconds, but the end must not wait for it.
    }
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));
    EXPECT_EQ(cameBack.value(), 0U);
}

// The first pause is 100 ms, and each is twice the one before. A loop that spun would have its passes much sooner.
TEST_F(EventLoopReconnecting, SleepsBetweenItsAttemptsForLongerAndLonger) {
    Counter passes;
    loop->setIdleTaskSync([&]() -> std::optional<milliseconds> {
        ++passes;
        return std::nullopt;
    });
    const Running running = start();
    onLoop([] {});
    const auto before = std::chrono::steady_clock::now();
    bus.kill();
    ASSERT_TRUE(wentAway.reaches(1));
    const std::size_t afterTheLoss = passes.value() + 1;  // the loss itself may still get its pass
    ASSERT_TRUE(passes.reaches(afterTheLoss + 4));
    EXPECT_GE(std::chrono::steady_clock::now() - before, milliseconds(100 + 200 + 400));
}

// The bus disconnects the loop each time. A busy machine makes pauses longer, never shorter.
TEST_F(EventLoopReconnecting, PausesForLongerEachTimeAndUsesNoProcessorTimeMeanwhile) {
    HandDrivenBus broker;
    const Running running = start();
    ASSERT_TRUE(broker.hears());
    const auto begin = std::chrono::steady_clock::now();
    broker.hangUp();
    const clockid_t clock = processorClock();
    const auto usedBefore = timeOf(clock);
    milliseconds sum{0};
    for (const milliseconds pause :
         {milliseconds(100), milliseconds(200), milliseconds(400), milliseconds(800)}) {
        ASSERT_TRUE(broker.hears()) << "after " << sum.count() << " ms";
        sum += pause;
        EXPECT_GE(std::chrono::steady_clock::now() - begin, sum)
            << "the pause of " << pause.count() << " ms is shorter";
        broker.hangUp();
    }
    EXPECT_LT(timeOf(clock) - usedBefore, sum / 100);
    EXPECT_EQ(log.texts(spdlog::level::err).size(), 1U);
}

// sd-event's current time is the beginning of the turn, which is before the attempt.
TEST_F(EventLoopReconnecting, PausesAfterAnAttemptHoweverLongThatTook) {
    HandDrivenBus broker;
    const Running running = start();
    ASSERT_TRUE(broker.hears());
    for (const milliseconds pause : {milliseconds(100), milliseconds(200), milliseconds(400)}) {
        std::this_thread::sleep_for(milliseconds(500));  // longer than the pause that follows
        const auto thrownOut = std::chrono::steady_clock::now();
        broker.hangUp();
        ASSERT_TRUE(broker.hears());
        EXPECT_GE(std::chrono::steady_clock::now() - thrownOut, pause);
    }
}

TEST_F(EventLoopReconnecting, SurvivesATaskThatThrows) {
    loop->setConnectionTaskSync([this](bool connected) {
        ++(connected ? cameBack : wentAway);
        throw std::runtime_error("mishap");
    });
    const Running running = start();
    onLoop([] {});
    bus.restart();
    ASSERT_TRUE(cameBack.reaches(1));
    onLoop([] {});
    EXPECT_EQ(wentAway.value(), 1U);
}

TEST_F(EventLoopReconnecting, LetsTheTaskReplaceItself) {
    loop->setConnectionTaskSync([this](bool) {
        loop->setConnectionTaskSync([this](bool connected) { ++(connected ? cameBack : wentAway); });
        ++handled;
    });
    const Running running = start();
    onLoop([] {});
    bus.restart();
    ASSERT_TRUE(cameBack.reaches(1));
    EXPECT_EQ(handled.value(), 1U);
    EXPECT_EQ(wentAway.value(), 0U);
}

}  // namespace
}  // namespace kaz::test
