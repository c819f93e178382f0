// Attempts to connect, and the pauses between them, on a scale on which the longest is soon reached.
#include "platform/dbus/connection.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/epoll.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "base/event_fd.h"
#include "doubles/recording_log/recording_log.h"
#include "support/hand_driven_bus/hand_driven_bus.h"
#include "support/out_of_memory/out_of_memory.h"
#include "support/waiting/waiting.h"

namespace {

std::atomic<bool> nextTimerFails = false;

}  // namespace

// Replaces libsystemd's function.
int sd_event_add_time(sd_event* event, sd_event_source** source, clockid_t clock, uint64_t due,
                      uint64_t accuracy, sd_event_time_handler_t handler, void* data) {
    if (nextTimerFails.exchange(false)) {
        return -ENOMEM;
    }
    static const auto original =
        reinterpret_cast<decltype(&sd_event_add_time)>(::dlsym(RTLD_NEXT, "sd_event_add_time"));
    return original(event, source, clock, due, accuracy, handler, data);
}

namespace kaz::test {
namespace {

using dbus::Connection;
using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

// A connection, and a thread that does for it what the loop does.
class ConnectionPauses : public testing::Test {
  protected:
    ~ConnectionPauses() override {
        if (thread_.joinable()) {
            connection_->abandon();
            stop_.set();
            thread_.join();
        }
    }

    // `prepare` runs on the thread, before the first attempt.
    void start(
        Connection::Pauses pauses, std::function<void(Connection&)> prepare = [](Connection&) {}) {
        connection_.emplace(pauses);
        thread_ = std::thread([this, prepare = std::move(prepare)] { run(prepare); });
    }

    RecordingLog log;
    HandDrivenBus broker;

  private:
    static dbus::EventPtr makeEvent() {
        sd_event* event = nullptr;
        EXPECT_GE(sd_event_new(&event), 0);
        return dbus::EventPtr(event);
    }

    static int onStop(sd_event_source* source, int /*fd*/, uint32_t /*ready*/, void* /*data*/) {
        return sd_event_exit(sd_event_source_get_event(source), 0);
    }

    void run(const std::function<void(Connection&)>& prepare) {
        ASSERT_GE(sd_event_add_io(event_.get(), nullptr, stop_.get(), EPOLLIN, onStop, nullptr), 0);
        prepare(*connection_);
        connection_->open(event_.get());
        while (sd_event_get_state(event_.get()) != SD_EVENT_FINISHED) {
            ASSERT_GE(sd_event_run(event_.get(), untilRetry()), 0);
            connection_->endTurn();
        }
    }

    uint64_t untilRetry() const {
        const auto due = connection_->retryAt();
        return due ? dbus::toMicroseconds(std::max(*due - steady_clock::now(), steady_clock::duration()))
                   : UINT64_MAX;
    }

    EventFd stop_;
    dbus::EventPtr event_ = makeEvent();
    std::optional<Connection> connection_;
    std::thread thread_;
};

TEST_F(ConnectionPauses, AreAHundredMillisecondsToFiveSecondsLong) {
    EXPECT_EQ(Connection::Pauses{}.shortest, milliseconds(100));
    EXPECT_EQ(Connection::Pauses{}.longest, seconds(5));
}

// The bus disconnects each time. Without the limit, the last pause would take minutes, which is longer than any delay of
// a busy machine.
TEST_F(ConnectionPauses, DoubleUntilTheLongest) {
    constexpr milliseconds longest{64};
    constexpr int attempts = 20;
    start({milliseconds(1), longest});
    ASSERT_TRUE(broker.hears());
    milliseconds pause{1};
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const auto thrownOut = steady_clock::now();
        broker.hangUp();
        ASSERT_TRUE(broker.hears()) << "after attempt " << attempt;
        EXPECT_GE(steady_clock::now() - thrownOut, pause) << "at attempt " << attempt;
        EXPECT_LT(steady_clock::now() - thrownOut, seconds(10));
        pause = std::min(2 * pause, longest);
    }
    EXPECT_EQ(log.texts(spdlog::level::err).size(), 1U);
}

// Such a bus would be asked ten times per second, for ever.
TEST_F(ConnectionPauses, DoubleAlsoWhenTheBusAcceptsTheConnectionFirst) {
    start({milliseconds(1), seconds(60)});
    ASSERT_TRUE(broker.letIn());
    for (milliseconds pause{1}; pause < milliseconds(300); pause *= 2) {
        const auto thrownOut = steady_clock::now();
        broker.hangUp();
        ASSERT_TRUE(broker.letIn()) << "after a pause of " << pause.count() << " ms";
        EXPECT_GE(steady_clock::now() - thrownOut, pause);
    }
}

// Without a limit that a connection must have lasted, it would have to be a long one. A busy machine makes a pause longer,
// so one of several counts.
TEST_F(ConnectionPauses, BeginAgainAfterAConnectionThatLastedForTheLongest) {
    constexpr milliseconds longest{400};
    start({milliseconds(1), longest});
    ASSERT_TRUE(broker.letIn());
    for (milliseconds pause{1}; pause < longest; pause *= 2) {
        broker.hangUp();
        ASSERT_TRUE(broker.letIn());
    }
    EXPECT_TRUE(eventually([&] {
        std::this_thread::sleep_for(longest);
        const auto thrownOut = steady_clock::now();
        broker.hangUp();
        return broker.letIn() && steady_clock::now() - thrownOut < longest / 2;
    }));
}

// Otherwise the loop would never connect again.
TEST_F(ConnectionPauses, EndAlsoWhenNoTimerCanBeMade) {
    start({milliseconds(1), milliseconds(1)});
    ASSERT_TRUE(broker.letIn());
    nextTimerFails = true;
    broker.hangUp();
    EXPECT_TRUE(broker.letIn());
}

TEST_F(ConnectionPauses, SeparateTwoConnectionsWhenTheBusHasNoRoomForASubscription) {
    broker.refuse("AddMatch");
    start({milliseconds(1), milliseconds(1)}, [](Connection& connection) {
        connection.signals().add({"test.Peer", "/", "test.Interface", "Changed"}, false,
                                 [](dbus::MessageDecoder&) {});
    });
    for (int connection = 0; connection < 2; ++connection) {
        ASSERT_TRUE(broker.letIn());
        EXPECT_EQ(broker.answer(1), std::vector<std::string>{"AddMatch"});
    }
    EXPECT_TRUE(log.waitForText(spdlog::level::info, "Connected to the system bus"));
}

TEST_F(ConnectionPauses, FollowAFirstAttemptWithoutMemory) {
    start({milliseconds(1), milliseconds(1)}, [](Connection& connection) {
        // The bus refuses this, and memory is missing for the error's text.
        connection.signals().add({"test.Peer", "/", "test.Interface", "Changed"}, false,
                                 [](dbus::MessageDecoder&) {});
        OutOfMemory::once();
    });
    broker.refuse("AddMatch");
    ASSERT_TRUE(broker.letIn());
    EXPECT_EQ(broker.answer(1), std::vector<std::string>{"AddMatch"});
    ASSERT_TRUE(broker.letIn());
    EXPECT_EQ(log.texts(spdlog::level::err),
              (std::vector<std::string>{"Exception from connecting to the system bus: std::bad_alloc",
                                        "Cannot connect to the system bus: Cannot allocate memory"}));
}

}  // namespace
}  // namespace kaz::test
