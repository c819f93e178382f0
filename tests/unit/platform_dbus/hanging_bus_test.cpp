// A bus daemon that does nothing for a while, and then continues.
#include <kaz/dbus/calls.h>
#include <signal.h>
#include <sys/socket.h>
#include <time.h>

#include <string>
#include <vector>

#include "unit/platform_dbus/loop_fixture.h"

namespace kaz::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr seconds callLimit{1};
// A loop that does not sleep while it waits uses all the time it is given.
constexpr milliseconds hardlyAny{100};

class EventLoopHangingBus : public LoopTest {
  protected:
    ~EventLoopHangingBus() override { goOn(); }

    // What answers a call of the peer; nothing when the call failed.
    std::string echo(const std::string& text) {
        sd_bus* const handle = loop->getSdBusHandle();
        auto call = dbus::makeDbusCall(handle, {peerName, peerPath, peerInterface}, "Echo");
        EXPECT_GE(sd_bus_message_append(call.message(), "s", text.c_str()), 0);
        dbus::MessageDecoder reply = dbus::sendMessage(handle, call);
        const dbus::MessagePtr owned(reply.message);
        return reply.message == nullptr ? std::string() : readString(reply);
    }

    // On the loop thread: the daemon stops before it has read anything that is sent from now on.
    void hang() {
        ucred credentials{};
        socklen_t size = sizeof credentials;
        ::getsockopt(sd_bus_get_fd(loop->getSdBusHandle()), SOL_SOCKET, SO_PEERCRED, &credentials, &size);
        ASSERT_GT(credentials.pid, 0);
        daemon_ = credentials.pid;
        ::kill(daemon_, SIGSTOP);
    }

    void goOn() const {
        if (daemon_ > 0) {
            ::kill(daemon_, SIGCONT);
        }
    }

    BusPeer peer{peerName};

  private:
    pid_t daemon_ = 0;
};

nanoseconds processorTimeOfThisThread() {
    timespec used{};
    EXPECT_EQ(::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used), 0);
    return seconds(used.tv_sec) + nanoseconds(used.tv_nsec);
}

TEST_F(EventLoopHangingBus, FailsTheCallAndNothingThatComesAfterwards) {
    Counter signals;
    const Running running = start();
    registerForChanged(false, [&](dbus::MessageDecoder&) { ++signals; });
    ASSERT_EQ(onLoop([this] { return echo("before"); }), "before");

    limitCalls(callLimit);
    onLoop([this] {
        hang();
        const auto processorTime = processorTimeOfThisThread();
        const auto begin = steady_clock::now();
        EXPECT_EQ(echo("meanwhile"), "");
        const auto elapsed = steady_clock::now() - begin;
        EXPECT_GE(elapsed, callLimit);
        EXPECT_LT(elapsed, seconds(10));
        EXPECT_LT(processorTimeOfThisThread() - processorTime, hardlyAny);
    });
    EXPECT_EQ(log.records(),
              (RecordingLog::Records{{spdlog::level::warn,
                                      "Call of Echo at test.Peer failed: "
                                      "org.freedesktop.DBus.Error.Timeout: Connection timed out"}}));
    EXPECT_TRUE(fallsAsleep(loopThread()));

    goOn();
    limitCalls(seconds(10));
    // The late reply is not taken for the reply to another call.
    EXPECT_EQ(onLoop([this] { return echo("after"); }), "after");
    EXPECT_EQ(peer.calls(), (std::vector<std::string>{"Echo(before)", "Echo(meanwhile)", "Echo(after)"}));
    peer.emit(changed, "after");
    EXPECT_TRUE(signals.reaches(1));
    EXPECT_EQ(log.records().size(), 1U);
}

// Otherwise the handler would never get a signal, because nobody would subscribe again.
TEST_F(EventLoopHangingBus, SubscriptionWithoutAnAnswerIsMadeAgainOnANewConnection) {
    Counter signals;
    const Running running = start();
    limitCalls(milliseconds(100));
    onLoop([this] { hang(); });
    registerForChanged(false, [&](dbus::MessageDecoder&) { ++signals; });
    ASSERT_TRUE(log.waitForText(spdlog::level::err, "Lost the connection to the system bus"));
    EXPECT_TRUE(log.contains("Cannot subscribe to Changed of test.Peer: Connection timed out"));
    goOn();
    ASSERT_TRUE(log.waitForText(spdlog::level::info, "Connected to the system bus"));
    peer.emit(changed, "after");
    EXPECT_TRUE(signals.reaches(1));
}

}  // namespace
}  // namespace kaz::test
