// The pauses between the attempts to reconnect, on a scale on which the longest is soon reached.
#include "platform/dbus/connection.h"

#include <gtest/gtest.h>
#include <sys/epoll.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>

#include "base/event_fd.h"
#include "doubles/recording_log/recording_log.h"
#include "unit/platform_dbus/mute_broker.h"

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

    void start(Connection::Pauses pauses) {
        connection_.emplace(pauses);
        thread_ = std::thread([this] { run(); });
    }

    RecordingLog log;
    MuteBroker broker;

  private:
    static dbus::EventPtr makeEvent() {
        sd_event* event = nullptr;
        EXPECT_GE(sd_event_new(&event), 0);
        return dbus::EventPtr(event);
    }

    static int onStop(sd_event_source* source, int /*fd*/, uint32_t /*ready*/, void* /*data*/) {
        return sd_event_exit(sd_event_source_get_event(source), 0);
    }

    void run() {
        ASSERT_GE(sd_event_add_io(event_.get(), nullptr, stop_.get(), EPOLLIN, onStop, nullptr), 0);
        connection_->open(event_.get());
        while (sd_event_get_state(event_.get()) != SD_EVENT_FINISHED) {
            ASSERT_GE(sd_event_run(event_.get(), UINT64_MAX), 0);
            connection_->endTurn();
        }
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

}  // namespace
}  // namespace kaz::test
