// Many random sequences of events. At every look the tracker must agree with the model, and after a single event keep
// the invariants. Looks come after every event, or after random numbers of events, as a burst of reports makes them.
#include "support/tracker_model/tracker_model.h"
#include "unit/connection_info/tracker_fixture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <random>

namespace kaz::test {
namespace {

using Kind = TrackerEvent::Kind;
using Reason = ConnectionInfo::DisconnectReason;
using Status = ConnectionInfo::Status;

constexpr std::uint64_t sequences = 3000;
constexpr int eventsInASequence = 120;

// The events and their arguments.
class RandomSequence {
  public:
    // Odd seeds also give an empty SSID and unknown statuses.
    explicit RandomSequence(std::uint64_t seed) : random_(seed), odd_(seed % 2 == 1) {}

    TrackerEvent next() {
        // Waiting, statuses and BSSs are frequent. A supplicant that starts or stops is rare, because it ends attempts.
        static constexpr std::array kinds{
            Kind::connect,  Kind::connect,        Kind::disconnect, Kind::forget, Kind::select, Kind::select,
            Kind::scanning, Kind::scanning,       Kind::bss,        Kind::bss,    Kind::bss,    Kind::noBss,
            Kind::status,   Kind::status,         Kind::status,     Kind::status, Kind::status, Kind::signal,
            Kind::online,   Kind::selectNameless, Kind::look,       Kind::wait,   Kind::wait,   Kind::wait,
            Kind::wait,     Kind::wait,           Kind::wait};
        const auto number = pick(static_cast<int>(kinds.size()) * 4);
        TrackerEvent event{.ssid = ssid(), .dBm = -30 - pick(60), .flag = flag(), .status = status()};
        if (number == 0) {
            event.kind = event.flag ? Kind::supplicantComes : Kind::supplicantGoes;
        } else {
            event.kind = kinds[static_cast<std::size_t>(number) % kinds.size()];
        }
        event.duration = event.kind == Kind::wait ? duration() : 0ns;
        return event;
    }

    // The number of events before the next look.
    int burst() {
        static constexpr std::array sizes{1, 1, 2, 2, 3, 4, 6, 16};
        return sizes[static_cast<std::size_t>(pick(static_cast<int>(sizes.size())))];
    }

    bool isOdd() const { return odd_; }

  private:
    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    bool flag() { return pick(2) == 1; }

    std::string ssid() {
        static const std::array<std::string, 4> ssids{"Home", "Cafe", std::string("nul\0\"\xff", 6), ""};
        return ssids[static_cast<std::size_t>(pick(odd_ ? 4 : 3))];
    }

    SupplicantStatus status() {
        static constexpr std::array statuses{1, 2, 2, 3, 3, 3, 4, 4, 4, 0, -1, 5};
        return static_cast<SupplicantStatus>(statuses[static_cast<std::size_t>(pick(odd_ ? 12 : 9))]);
    }

    std::chrono::nanoseconds duration() {
        static constexpr std::array<std::chrono::nanoseconds, 10> durations{
            1ns, 1ns, 500us, 1ms, 100ms, 999'999us, 1s, 1'999ms, 1'999'000'001ns, 2s};
        return durations[static_cast<std::size_t>(pick(10))];
    }

    std::mt19937_64 random_;
    bool odd_;
};

enum class Looks { afterEveryEvent, afterBursts };

class Comparison {
  public:
    Comparison(std::uint64_t seed, Looks looks) : random_(seed), looks_(looks) {}

    // Stops at the first disagreement, reports it and returns false.
    bool run() {
        for (int events = 0; events < eventsInASequence;) {
            const int burst = looks_ == Looks::afterEveryEvent ? 1 : random_.burst();
            runBurst(burst);
            events += burst;
            if (::testing::Test::HasFailure()) {
                ADD_FAILURE() << "after event " << events << ": " << story();
                return false;
            }
        }
        return true;
    }

    // The records logged so far.
    const std::vector<std::string>& texts() const { return texts_; }

  private:
    void runBurst(int events) {
        const ConnectionInfo before = tracker_.getConnectionInfo();
        model_.getConnectionInfo();
        const auto timeLeftBefore = tracker_.getActiveTimeout();
        log_.clear();
        for (int i = 0; i < events; ++i) {
            event_ = random_.next();
            happen();
        }
        compare();
        const ConnectionInfo after = tracker_.getConnectionInfo();
        model_.getConnectionInfo();
        compare();
        recordMayBeFresh_ = recordMayBeFresh_ && after.status == Status::disconnected;
        if (events == 1) {
            checkInvariants(before, after, timeLeftBefore);
        }
        seenTexts_ = texts_.size();
        story_.push_back(std::nullopt);
    }

    std::string story() const {
        std::string text;
        for (const auto& event : story_) {
            text += (event ? ::testing::PrintToString(*event) : "look") + "; ";
        }
        return text;
    }

    void happen() {
        story_.push_back(event_);
        scanning_ =
            event_.kind == Kind::scanning ? event_.flag : scanning_ && !isOneOf({Kind::supplicantGoes});
        recordMayBeFresh_ = recordMayBeFresh_ || isSupplicants();
        clock_->advance(event_.duration);
        tell(tracker_, event_);
        tell(model_, event_);
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
        const ConnectionInfo published = tracker_.getConnectionInfo();
        const ConnectionInfo expected = model_.getConnectionInfo();
        EXPECT_TRUE(published == expected) << describe(published) << " is not " << describe(expected);
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
        const auto timeLeft = tracker_.getActiveTimeout();
        if (!timeLeft) {
            EXPECT_TRUE(!wasRunning || !isOneOf({Kind::selectNameless, Kind::noBss, Kind::signal,
                                                 Kind::online, Kind::look}));
            return;
        }
        EXPECT_GT(*timeLeft, 0ms) << "the tracker was just looked at";
        EXPECT_TRUE(wasRunning || isOneOf({Kind::connect, Kind::select, Kind::scanning}));
        EXPECT_TRUE(after.status == Status::connectingWifi || recordMayBeFresh_) << describe(after);
    }

    bool isOneOf(std::initializer_list<Kind> kinds) const {
        return std::find(kinds.begin(), kinds.end(), event_.kind) != kinds.end();
    }
    bool isSupplicants() const { return isOneOf({Kind::supplicantComes, Kind::supplicantGoes}); }

    void checkTimeOut(std::optional<std::chrono::milliseconds> timeLeftBefore) {
        const bool timedOut =
            texts_.size() > seenTexts_ && texts_.back().find("No response") != std::string::npos;
        if (timedOut) {
            EXPECT_FALSE(scanning_);
            EXPECT_EQ(event_.kind, Kind::wait) << "only time can end the time";
            EXPECT_TRUE(timeLeftBefore.has_value()) << "it was running";
        }
    }

    // A disconnect is recorded only when a connection or attempt ended, with its SSID and the current time.
    void checkRecord(const ConnectionInfo& before, const ConnectionInfo& after) {
        if (isSupplicants()) {
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
        const bool wasBegun = isOneOf({Kind::connect, Kind::select}) && after.disconnectSsid == event_.ssid;
        const bool wasRelabelled =
            event_.kind == Kind::forget && before.disconnectReason == Reason::causedBySystem &&
            after.disconnectReason == Reason::causedByUser && after.disconnectSsid == before.disconnectSsid;
        EXPECT_TRUE(wasLive || wasBegun || wasRelabelled) << describe(before) << " to " << describe(after);
    }

    RandomSequence random_;
    Looks looks_;
    RecordingLog log_;
    std::shared_ptr<FakeClock> clock_ = std::make_shared<FakeClock>();
    wifi::ConnectionInfoHelper tracker_{clock_};
    TrackerModel model_{clock_};
    TrackerEvent event_;
    std::vector<std::optional<TrackerEvent>> story_;  // nullopt: a look; as text only if something fails
    std::vector<std::string> texts_;
    std::size_t seenTexts_ = 0;
    bool scanning_ = false;
    bool recordMayBeFresh_ = false;  // a started supplicant clears the record of a pending attempt
};

class RandomEventSequences : public ::testing::TestWithParam<Looks> {};

TEST_P(RandomEventSequences, TrackerAgreesWithTheModelAtEveryLook) {
    std::map<std::string, int> ends;
    for (std::uint64_t seed = 1; seed <= sequences; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Comparison comparison(seed, GetParam());
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

INSTANTIATE_TEST_SUITE_P(With, RandomEventSequences,
                         ::testing::Values(Looks::afterEveryEvent, Looks::afterBursts),
                         [](const auto& looks) {
                             return looks.param == Looks::afterBursts ? "LooksAfterBursts"
                                                                      : "LooksAfterEveryEvent";
                         });

}  // namespace
}  // namespace kaz::test
