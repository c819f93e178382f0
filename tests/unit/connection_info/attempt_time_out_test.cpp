// How long an attempt lasts without a reaction of the supplicant.
#include "unit/connection_info/tracker_fixture.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class AttemptTimeOut : public TrackerTest {};

constexpr auto noResponseFromHome =
    R"(No response from wpa_supplicant, assuming we are disconnected from ssid="Home")";

TEST_F(AttemptTimeOut, TimeoutCountsDownFromTwoSeconds) {
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(timeLeft(), 2000ms);
    clock->advance(1ms);
    EXPECT_EQ(timeLeft(), 1999ms);
    clock->advance(1500ms);
    EXPECT_EQ(timeLeft(), 499ms);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(AttemptTimeOut, RestOfTheTimeoutIsTruncatedAndNotClamped) {
    struct Row {
        std::chrono::nanoseconds elapsed;
        std::chrono::milliseconds left;
    };
    const std::array rows{
        Row{0ns, 2000ms},
        Row{1ns, 1999ms},
        Row{999'999ns, 1999ms},
        Row{1'000'000ns, 1999ms},
        Row{1'000'001ns, 1998ms},
        Row{1'998'999'999ns, 1ms},
        Row{1'999'000'000ns, 1ms},
        Row{1'999'000'001ns, 0ms},
        Row{2s, 0ms},
        Row{2s + 999'999ns, 0ms},
        Row{2s + 1'000'000ns, -1ms},
        Row{2s + 1'999'999ns, -1ms},
        Row{5s, -3000ms},
        Row{24h, 2000ms - 24h},
    };
    for (const Row& row : rows) {
        const auto ownClock = std::make_shared<FakeClock>();
        wifi::ConnectionInfoHelper fresh(ownClock);
        fresh.notifyAboutConnectionAttempt("Home");
        ownClock->advance(row.elapsed);
        EXPECT_EQ(fresh.getActiveTimeout(), row.left) << row.elapsed.count() << " ns";
    }
}

TEST_F(AttemptTimeOut, NoTimeoutRunsWithoutAnAttempt) {
    EXPECT_EQ(timeLeft(), std::nullopt);
    becomeConnected("Home");
    EXPECT_EQ(timeLeft(), std::nullopt);
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(timeLeft(), std::nullopt);
}

TEST_F(AttemptTimeOut, ExpiredTimeoutEndsTheAttemptWithAWarning) {
    tracker.setSupplicantStatus(SupplicantStatus::Disconnected);
    clock->advance(1s);
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(2s);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 3000 ms");
    EXPECT_EQ(log.records(), (RecordingLog::Records{{spdlog::level::warn, noResponseFromHome}}));
    EXPECT_EQ(timeLeft(), std::nullopt);
    clock->advance(2s);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 3000 ms") << "it is over";
    EXPECT_EQ(log.records().size(), 1U);
}

TEST_F(AttemptTimeOut, ExpiredTimeoutWithoutAnyReportEndsDisconnected) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(2s);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 2000 ms");
}

TEST_F(AttemptTimeOut, TimeoutExpiresWithLessThanAMillisecondLeft) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(1'999'000'000ns);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    clock->advance(1ns);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 1999.000001 ms");
}

TEST_F(AttemptTimeOut, ExpiredTimeoutIsNoticedByEveryOperationThatUpdates) {
    const std::vector<std::function<void()>> updates{
        [&] { tracker.setCurrentBss(std::nullopt); },
        [&] { tracker.setSupplicantStatus(SupplicantStatus::Disconnected); },
        [&] { tracker.setNetworkdIsOnline(false); },
        [&] { tracker.getConnectionInfo(); },
        [&] { tracker.setSignalStrength(-40); },
    };
    for (std::size_t i = 0; i < updates.size(); ++i) {
        tracker.setCurrentBss(bss("Old"));  // without a BSS, a signal is ignored
        log.clear();
        tracker.notifyAboutConnectionAttempt("Home");
        clock->advance(2s);
        updates[i]();
        EXPECT_EQ(log.texts(), std::vector<std::string>{noResponseFromHome}) << "operation " << i;
    }
}

TEST_F(AttemptTimeOut, ExpiredTimeoutIsNotNoticedByOperationsThatOnlyStore) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(5s);
    tracker.setCurrentNetworkSsid("Home");
    tracker.setCurrentNetworkSsid(std::nullopt);
    tracker.setScanning(false);
    tracker.setSignalStrength(-40);
    EXPECT_TRUE(log.records().empty());
    tracker.notifyAboutConnectionAttempt("Other");
    EXPECT_TRUE(log.records().empty()) << "the former attempt was replaced before anybody looked";
    EXPECT_EQ(timeLeft(), 2000ms);
}

TEST_F(AttemptTimeOut, ExpiredTimeoutPublishesTheConnectionThatTheSupplicantLastReported) {
    becomeConnected("Old");
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(2s);
    EXPECT_EQ(published(), "connected 'Old' -50, causedBySystem 'Home' @ 3000 ms");
    EXPECT_EQ(log.texts(), std::vector<std::string>{noResponseFromHome});
}

TEST_F(AttemptTimeOut, ScanPausesTheTimeoutAndItsEndRestartsIt) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(1500ms);
    tracker.setScanning(true);
    EXPECT_EQ(timeLeft(), std::nullopt);
    clock->advance(1h);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    tracker.setScanning(false);
    EXPECT_EQ(timeLeft(), 2000ms);
    clock->advance(1999ms);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_TRUE(log.records().empty());
    clock->advance(1ms);
    EXPECT_EQ(published(), "disconnected '' -100, causedBySystem 'Home' @ 3603500 ms");
}

TEST_F(AttemptTimeOut, ScanBegunBeforeTheAttemptPausesTheTimeout) {
    tracker.setScanning(true);
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(timeLeft(), std::nullopt);
    clock->advance(10s);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
}

TEST_F(AttemptTimeOut, RepeatedEndOfAScanDoesNotRestartTheTimeout) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(500ms);
    tracker.setScanning(false);
    EXPECT_EQ(timeLeft(), 1500ms) << "no scan was running";
    tracker.setScanning(true);
    tracker.setScanning(true);
    tracker.setScanning(false);
    EXPECT_EQ(timeLeft(), 2000ms);
    clock->advance(500ms);
    tracker.setScanning(false);
    EXPECT_EQ(timeLeft(), 1500ms);
}

TEST_F(AttemptTimeOut, LinkSetUpStopsTheTimeoutForGood) {
    tracker.notifyAboutConnectionAttempt("Home");
    clock->advance(1999ms);
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(timeLeft(), std::nullopt);
    clock->advance(1h);
    tracker.setScanning(true);
    tracker.setScanning(false);
    EXPECT_EQ(timeLeft(), std::nullopt);
    clock->advance(1h);
    EXPECT_EQ(published(), "connectingWifi 'Home' -100");
    EXPECT_TRUE(log.records().empty());
}

TEST_F(AttemptTimeOut, EveryAttemptRestartsTheTimeout) {
    tracker.notifyAboutConnectionAttempt("Home");
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    clock->advance(1ns);
    tracker.notifyAboutConnectionAttempt("Home");
    EXPECT_EQ(timeLeft(), 2000ms) << "link set-up was seen in the former attempt only";
    EXPECT_EQ(published(), "connectingWifi 'Home' -100, causedByUser 'Home' @ 1e-06 ms");
    EXPECT_EQ(timeLeft(), 2000ms);
}

TEST_F(AttemptTimeOut, ExpiredTimeoutNamesTheNetworkInRedactableForm) {
    struct Row {
        std::string ssid;
        std::string redactable;
    };
    const std::array rows{
        Row{R"(Cafe "A")", R"(ssid="Cafe \"A\"")"},
        Row{R"(back\slash\)", R"(ssid="back\\slash\\")"},
        Row{std::string("nul\0inside", 10), std::string("ssid=\"nul\0inside\"", 17)},
        Row{"\xff\xfe\x80", "ssid=\"\xff\xfe\x80\""},
        Row{"{}", R"(ssid="{}")"},
        Row{"", R"(ssid="")"},
    };
    for (const Row& row : rows) {
        log.clear();
        tracker.notifyAboutConnectionAttempt(row.ssid);
        clock->advance(2s);
        tracker.getConnectionInfo();
        EXPECT_EQ(log.texts(), std::vector<std::string>{"No response from wpa_supplicant, assuming we are "
                                                        "disconnected from " +
                                                        row.redactable})
            << row.redactable;
    }
}

}  // namespace
}  // namespace kaz::test
