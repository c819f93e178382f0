#include <attempt.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;
using Status = wifi::ConnectionInfo::Status;
using Outcome = Attempt::Outcome;

// An attempt to join "Home" that the library has taken up.
class AttemptTest : public ::testing::Test {
  protected:
    AttemptTest() { see(Status::connectingWifi); }

    std::optional<Outcome> see(Status status, const std::string& ssid = "Home") {
        wifi::ConnectionInfo info;
        info.status = status;
        info.ssid = status == Status::disconnected ? "" : ssid;
        info.disconnectTime = now_;
        return attempt_.see(info, scanning_, running_, now_);
    }

    Attempt::Clock::time_point now_{1h};
    bool scanning_ = false;
    bool running_ = true;
    Attempt attempt_{"Home", now_};
};

using AttemptOf = AttemptTest;

TEST_F(AttemptOf, ANetworkWithAnAddressIsConnected) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    EXPECT_EQ(see(Status::connected), Outcome::connected);
}

TEST_F(AttemptOf, AnEndAfterTwoSecondsOfSilenceIsNoAnswer) {
    now_ += 2s;
    EXPECT_EQ(see(Status::disconnected), Outcome::notAnswering);
}

TEST_F(AttemptOf, TheTwoSecondsBeginAnewWhenAScanEnds) {
    scanning_ = true;
    EXPECT_EQ(see(Status::connectingWifi), std::nullopt);
    now_ += 3s;
    scanning_ = false;
    EXPECT_EQ(see(Status::connectingWifi), std::nullopt);
    now_ += 2s;
    EXPECT_EQ(see(Status::disconnected), Outcome::notAnswering);
}

TEST_F(AttemptOf, AnEndAtAnotherTimeIsARefusal) {
    for (const auto after : {300ms, 1400ms, 2600ms, 4500ms}) {
        Attempt attempt("Home", now_);
        wifi::ConnectionInfo info;
        info.status = Status::connectingWifi;
        info.ssid = "Home";
        EXPECT_EQ(attempt.see(info, false, true, now_), std::nullopt);
        info = {};
        info.disconnectTime = now_ + after;
        EXPECT_EQ(attempt.see(info, false, true, now_ + after), Outcome::refused) << after.count() << " ms";
    }
}

TEST_F(AttemptOf, AnotherNetworkIsARefusal) {
    EXPECT_EQ(see(Status::connected, "Attic"), Outcome::refused);
}

TEST_F(AttemptOf, ALinkThatBreaksBeforeThereIsAnAddressIsLost) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    now_ += 2s;
    EXPECT_EQ(see(Status::disconnected), Outcome::lost);
}

TEST_F(AttemptOf, ALinkWithoutAnAddressForHalfAMinuteIsToldOf) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    now_ += 29s;
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    now_ += 1s;
    EXPECT_EQ(see(Status::connectingIP), Outcome::noAddress);
}

TEST_F(AttemptOf, WifiThatStopsEndsIt) {
    running_ = false;
    EXPECT_EQ(see(Status::disconnected), Outcome::stopped);
}

TEST_F(AttemptOf, WhatWasBeforeTheLibraryTookItUpDoesNotCount) {
    Attempt attempt("Home", now_);
    wifi::ConnectionInfo before;
    EXPECT_EQ(attempt.see(before, false, true, now_), std::nullopt);
    before.status = Status::connected;
    before.ssid = "Attic";
    EXPECT_EQ(attempt.see(before, false, true, now_), std::nullopt);
}

}  // namespace
}  // namespace kaz::test
