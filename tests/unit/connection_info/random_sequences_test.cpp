// Many random sequences of events. After every event the tracker must agree with the model, and keep the invariants.
#include "support/tracker_model/tracker_model.h"
#include "unit/connection_info/tracker_fixture.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;
using Reason = ConnectionInfo::DisconnectReason;
using Status = ConnectionInfo::Status;

constexpr std::uint64_t sequences = 3000;
constexpr int eventsInASequence = 120;

enum class Event {
    attempt,
    disconnect,
    forget,
    select,
    selectNameless,
    scanning,
    bss,
    noBss,
    status,
    signal,
    online,
    supplicant,
    look,
    wait,
};

// The events and their arguments.
class RandomSequence {
  public:
    // Odd seeds also give an empty SSID and unknown statuses.
    explicit RandomSequence(std::uint64_t seed) : random_(seed), odd_(seed % 2 == 1) {}

    Event next() {
        // Waiting, statuses and BSSs are frequent. A supplicant that starts or stops is rare, because it ends attempts.
        static constexpr std::array events{
            Event::attempt, Event::attempt,  Event::disconnect, Event::forget, Event::select,
            Event::select,  Event::scanning, Event::scanning,   Event::bss,    Event::bss,
            Event::bss,     Event::noBss,    Event::status,     Event::status, Event::status,
            Event::status,  Event::status,   Event::signal,     Event::online, Event::selectNameless,
            Event::look,    Event::wait,     Event::wait,       Event::wait,   Event::wait,
            Event::wait,    Event::wait};
        const auto number = pick(static_cast<int>(events.size()) * 4);
        return number == 0 ? Event::supplicant : events[static_cast<std::size_t>(number) % events.size()];
    }

    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    bool flag() { return pick(2) == 1; }

    std::string ssid() {
        static const std::array<std::string, 4> ssids{"Home", "Cafe", std::string("nul\0\"\xff", 6), ""};
        return ssids[static_cast<std::size_t>(pick(odd_ ? 4 : 3))];
    }

    int status() {
        static constexpr std::array statuses{1, 2, 2, 3, 3, 3, 4, 4, 4, 0, -1, 5};
        return statuses[static_cast<std::size_t>(pick(odd_ ? 12 : 9))];
    }

    std::chrono::nanoseconds duration() {
        static constexpr std::array<std::chrono::nanoseconds, 10> durations{
            1ns, 1ns, 500us, 1ms, 100ms, 999'999us, 1s, 1'999ms, 1'999'000'001ns, 2s};
        return durations[static_cast<std::size_t>(pick(10))];
    }

    bool isOdd() const { return odd_; }

  private:
    std::mt19937_64 random_;
    bool odd_;
};

class Comparison {
  public:
    explicit Comparison(std::uint64_t seed) : random_(seed) {}

    // Stops at the first disagreement, reports it and returns false.
    bool run() {
        for (int i = 0; i < eventsInASequence; ++i) {
            const ConnectionInfo before = tracker_.getConnectionInfo();
            model_.getConnectionInfo();
            event_ = random_.next();
            const auto timeLeftBefore = tracker_.getActiveTimeout();
            log_.clear();
            happen();
            compare();
            const ConnectionInfo after = tracker_.getConnectionInfo();
            model_.getConnectionInfo();
            compare();
            checkInvariants(before, after, timeLeftBefore);
            if (::testing::Test::HasFailure()) {
                ADD_FAILURE() << "after event " << i << ": " << story_;
                return false;
            }
        }
        return true;
    }

    // The records logged so far.
    const std::vector<std::string>& texts() const { return texts_; }

  private:
    template <typename Operation>
    void both(const std::string& name, const std::string& argument, const Operation& operation) {
        story_ += name + '(' + argument + ") ";
        operation(tracker_);
        operation(model_);
    }

    void happen() {
        const std::string ssid = random_.ssid();
        const std::string printable = ::testing::PrintToString(ssid);
        argument_ = ssid;
        switch (event_) {
            case Event::attempt:
                return both("attempt", printable, [&](auto& t) { t.notifyAboutConnectionAttempt(ssid); });
            case Event::disconnect:
                return both("disconnect", "", [&](auto& t) { t.notifyAboutDisconnect(); });
            case Event::forget:
                return both("forget", printable, [&](auto& t) { t.notifyAboutForget(ssid); });
            case Event::select:
                return both("select", printable, [&](auto& t) { t.setCurrentNetworkSsid(ssid); });
            case Event::selectNameless:
                return both("select", "-", [&](auto& t) { t.setCurrentNetworkSsid(std::nullopt); });
            case Event::bss: {
                const Bss next = bss(ssid, -30 - random_.pick(60));
                return both("bss", printable, [&](auto& t) { t.setCurrentBss(next); });
            }
            case Event::noBss:
                return both("bss", "-", [&](auto& t) { t.setCurrentBss(std::nullopt); });
            case Event::look:
                return both("look", "", [&](auto& t) { t.getConnectionInfo(); });
            case Event::scanning:
            case Event::status:
            case Event::signal:
            case Event::online:
            case Event::supplicant:
            case Event::wait:
                return happenWithANumber();
        }
    }

    void happenWithANumber() {
        const bool flag = random_.flag();
        const int status = random_.status();
        const int signal = -30 - random_.pick(60);
        const auto duration = random_.duration();
        if (event_ == Event::scanning) {
            scanning_ = flag;
            both("scanning", flag ? "true" : "false", [&](auto& t) { t.setScanning(flag); });
        } else if (event_ == Event::status) {
            both("status", std::to_string(status),
                 [&](auto& t) { t.setSupplicantStatus(static_cast<SupplicantStatus>(status)); });
        } else if (event_ == Event::signal) {
            both("signal", std::to_string(signal), [&](auto& t) { t.setSignalStrength(signal); });
        } else if (event_ == Event::online) {
            both("online", flag ? "true" : "false", [&](auto& t) { t.setNetworkdIsOnline(flag); });
        } else if (event_ == Event::supplicant) {
            scanning_ = scanning_ && flag;
            both("supplicant", flag ? "true" : "false", [&](auto& t) { t.setSupplicantState(flag); });
        } else {
            story_ += "wait(" + std::to_string(duration.count()) + ") ";
            clock_->advance(duration);
        }
    }

    void compare() {
        EXPECT_EQ(tracker_.getActiveTimeout(), model_.getActiveTimeout());
        std::vector<std::string> logged;
        for (const LogRecord& record : log_.records()) {
            const auto level = spdlog::level::to_string_view(record.level);
            logged.push_back(std::string(level.data(), level.size()) + ": " + record.text);
        }
        log_.clear();
        EXPECT_EQ(logged, model_.takeTexts());
        texts_.insert(texts_.end(), logged.begin(), logged.end());
        EXPECT_EQ(describe(tracker_.getConnectionInfo()), describe(model_.getConnectionInfo()));
    }

    void checkInvariants(const ConnectionInfo& before, const ConnectionInfo& after,
                         std::optional<std::chrono::milliseconds> timeLeftBefore) {
        if (!random_.isOdd()) {
            EXPECT_EQ(after.status == Status::disconnected, after.ssid.empty()) << describe(after);
        }
        checkTimeOut(timeLeftBefore);
        checkAttempt(after, timeLeftBefore.has_value());
        checkRecord(before, after);
    }

    // Which events can start a timeout, and which cannot end it.
    void checkAttempt(const ConnectionInfo& after, bool wasRunning) {
        recordMayBeFresh_ =
            (event_ == Event::supplicant || recordMayBeFresh_) && after.status == Status::disconnected;
        const auto timeLeft = tracker_.getActiveTimeout();
        if (!timeLeft) {
            EXPECT_TRUE(!wasRunning || !isOneOf({Event::selectNameless, Event::noBss, Event::signal,
                                                 Event::online, Event::look}));
            return;
        }
        EXPECT_GT(*timeLeft, 0ms) << "the tracker was just looked at";
        EXPECT_TRUE(wasRunning || isOneOf({Event::attempt, Event::select, Event::scanning}));
        EXPECT_TRUE(after.status == Status::connectingWifi || recordMayBeFresh_) << describe(after);
    }

    bool isOneOf(std::initializer_list<Event> events) const {
        return std::find(events.begin(), events.end(), event_) != events.end();
    }

    void checkTimeOut(std::optional<std::chrono::milliseconds> timeLeftBefore) {
        const bool timedOut =
            texts_.size() > seenTexts_ && texts_.back().find("No response") != std::string::npos;
        seenTexts_ = texts_.size();
        if (timedOut) {
            EXPECT_FALSE(scanning_);
            EXPECT_EQ(event_, Event::wait) << "only time can end the time";
            EXPECT_TRUE(timeLeftBefore.has_value()) << "it was running";
        }
    }

    // A disconnect is recorded only when a connection or attempt ended, with its SSID and the current time.
    void checkRecord(const ConnectionInfo& before, const ConnectionInfo& after) {
        if (event_ == Event::supplicant) {
            return;
        }
        const bool sameRecord = before.disconnectReason == after.disconnectReason &&
                                before.disconnectTime == after.disconnectTime &&
                                before.disconnectSsid == after.disconnectSsid;
        if (sameRecord) {
            return;
        }
        EXPECT_EQ(after.disconnectTime, clock_->get());
        EXPECT_NE(after.disconnectReason, Reason::unknown);
        const bool wasLive = before.status != Status::disconnected && after.disconnectSsid == before.ssid;
        // Reports with the same time as the attempt may end it at once.
        const bool wasBegun = isOneOf({Event::attempt, Event::select}) && after.disconnectSsid == argument_;
        const bool wasRelabelled =
            event_ == Event::forget && before.disconnectReason == Reason::causedBySystem &&
            after.disconnectReason == Reason::causedByUser && after.disconnectSsid == before.disconnectSsid;
        EXPECT_TRUE(wasLive || wasBegun || wasRelabelled) << describe(before) << " to " << describe(after);
    }

    RandomSequence random_;
    RecordingLog log_;
    std::shared_ptr<FakeClock> clock_ = std::make_shared<FakeClock>();
    wifi::ConnectionInfoHelper tracker_{clock_};
    TrackerModel model_{clock_};
    Event event_ = Event::look;
    std::string argument_;
    std::string story_;
    std::vector<std::string> texts_;
    std::size_t seenTexts_ = 0;
    bool scanning_ = false;
    bool recordMayBeFresh_ = false;  // a started supplicant clears the record of a pending attempt
};

TEST(RandomEventSequences, TrackerAgreesWithTheModelAfterEveryRandomEvent) {
    std::map<std::string, int> ends;
    for (std::uint64_t seed = 1; seed <= sequences; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Comparison comparison(seed);
        ASSERT_TRUE(comparison.run());
        for (const std::string& text : comparison.texts()) {
            ++ends[text.substr(0, text.find(' ', text.find(' ') + 1))];
        }
    }
    // The sequences must end many attempts in each way.
    EXPECT_GT(ends["warning: No"], 1000);
    EXPECT_GT(ends["warning: Connected"], 1000);
    EXPECT_GT(ends["debug: Disconnected"], 1000);
}

}  // namespace
}  // namespace kaz::test
