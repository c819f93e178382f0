#include "base/non_copyable.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <thread>
#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

class EventLoopTasks : public LoopTest {};

TEST_F(EventLoopTasks, RunInTheOrderTheyWerePushed) {
    std::vector<int> order;
    std::vector<int> expected;
    const Running running = start();
    for (int i = 0; i < 1000; ++i) {
        loop->pushTaskAsync([&order, i] { order.push_back(i); });
        expected.push_back(i);
    }
    onLoop([] {});
    EXPECT_EQ(order, expected);
}

TEST_F(EventLoopTasks, PushedBeforeTheStartRunOnceTheLoopStartsBeforeLaterTasks) {
    std::vector<std::string> order;
    loop->pushTaskAsync([&] { order.emplace_back("before the start, first"); });
    loop->pushTaskAsync([&] { order.emplace_back("before the start, second"); });
    EXPECT_TRUE(order.empty());
    const Running running = start();
    onLoop([&] { order.emplace_back("after the start"); });
    EXPECT_EQ(order, (std::vector<std::string>{"before the start, first", "before the start, second",
                                               "after the start"}));
}

TEST_F(EventLoopTasks, FindTheConnectionOpenFromTheFirstOn) {
    std::promise<bool> connected;
    loop->pushTaskAsync([&] { connected.set_value(loop->getSdBusHandle() != nullptr); });
    ASSERT_EQ(loop->getSdBusHandle(), nullptr);
    const Running running = start();
    EXPECT_TRUE(connected.get_future().get());
}

TEST_F(EventLoopTasks, OfSeveralThreadsKeepTheOrderOfEachThread) {
    constexpr int perThread = 500;
    std::array<std::vector<int>, 4> orders;
    const Running running = start();
    std::vector<std::thread> threads;
    for (auto& order : orders) {
        threads.emplace_back([&] {
            for (int i = 0; i < perThread; ++i) {
                loop->pushTaskAsync([&order, i] { order.push_back(i); });
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    onLoop([] {});
    std::vector<int> expected;
    for (int i = 0; i < perThread; ++i) {
        expected.push_back(i);
    }
    for (const auto& order : orders) {
        EXPECT_EQ(order, expected);
    }
}

TEST_F(EventLoopTasks, PushedFromATaskRunAfterIt) {
    std::vector<std::string> order;
    Counter ran;
    loop->pushTaskAsync([&] {
        loop->pushTaskAsync([&] {
            order.emplace_back("inner");
            ++ran;
        });
        order.emplace_back("outer");
    });
    const Running running = start();
    ASSERT_TRUE(ran.reaches(1));
    EXPECT_EQ(order, (std::vector<std::string>{"outer", "inner"}));
}

TEST_F(EventLoopTasks, AreDestroyedOnTheLoopThreadBeforeTheNextRuns) {
    struct Held : private NonCopyable {
        explicit Held(std::atomic<pid_t>& where) : destroyedOn(where) {}
        ~Held() { destroyedOn = ::gettid(); }
        std::atomic<pid_t>& destroyedOn;
    };
    std::atomic<pid_t> destroyedOn = 0;
    const Running running = start();
    const pid_t thread = loopThread();
    loop->pushTaskAsync([held = std::make_shared<Held>(destroyedOn)] {});
    EXPECT_EQ(onLoop([&] { return destroyedOn.load(); }), thread);
}

TEST_F(EventLoopTasks, RunOnAThreadWithANameAndWithoutTheHostsSignals) {
    const Running running = start();
    const auto [name, mask] = onLoop([] {
        std::array<char, 16> text{};
        ::pthread_getname_np(::pthread_self(), text.data(), text.size());
        sigset_t blocked;
        ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        return std::pair(std::string(text.data()), blocked);
    });
    EXPECT_EQ(name, "kazdbus");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGUSR1, SIGALRM, SIGPIPE, SIGRTMIN}) {
        EXPECT_EQ(::sigismember(&mask, signal), 1) << strsignal(signal);
    }
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
        EXPECT_EQ(::sigismember(&mask, fault), 0) << strsignal(fault);
    }
}

TEST_F(EventLoopTasks, ShareTheirThreadWithTimerIdleTaskSignalsAndTheEndOfTheConnection) {
    BusPeer peer{peerName};
    Counter passes;
    Counter expiries;
    Counter handled;
    Counter lost;
    std::atomic<int> elsewhere = 0;
    std::atomic<pid_t> thread = 0;
    const auto count = [&](Counter& counter) {
        elsewhere += ::gettid() == thread ? 0 : 1;
        ++counter;
    };
    loop->pushTaskAsync([&] { thread = ::gettid(); });
    const Running running = start();
    EXPECT_EQ(loopThread(), thread);
    EXPECT_NE(thread, ::gettid());
    registerForChanged(false, [&](dbus::MessageDecoder&) { count(handled); });
    onLoop([&] {
        loop->setConnectionTaskSync([&](bool) { count(lost); });
        loop->setIdleTaskSync([&]() -> std::optional<milliseconds> {
            count(passes);
            return std::nullopt;
        });
        loop->setTimerCompletedTask([&] { count(expiries); });
        loop->configureTimerSync(true, milliseconds(10));
    });
    peer.emit(changed, "");
    EXPECT_TRUE(passes.reaches(1));
    EXPECT_TRUE(expiries.reaches(1));
    EXPECT_TRUE(handled.reaches(1));
    bus.kill();
    EXPECT_TRUE(lost.reaches(1));
    EXPECT_EQ(elsewhere, 0);
}

TEST_F(EventLoopTasks, LeaveTheSignalsOfTheStartingThreadAsTheyWere) {
    sigset_t before;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &before);
    const Running running = start();
    sigset_t after;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (const int signal : {SIGINT, SIGTERM, SIGCHLD, SIGUSR1}) {
        EXPECT_EQ(::sigismember(&after, signal), ::sigismember(&before, signal)) << strsignal(signal);
    }
}

}  // namespace
}  // namespace kaz::test
