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
        sight_.info.status = status;
        sight_.info.ssid = status == Status::disconnected ? "" : ssid;
        sight_.info.disconnectTime = sight_.now;
        return attempt_.see(sight_);
    }
    void setScanning(bool scanning) {
        sight_.scanning = scanning;
        sight_.scanningChanged = sight_.now;
    }
    void pass(std::chrono::milliseconds time) { sight_.now += time; }

    Attempt::Sight sight_{{}, true, false, {}, Attempt::Clock::time_point(1h)};
    Attempt attempt_{"Home", sight_.now};
};

using AttemptOf = AttemptTest;

TEST_F(AttemptOf, ANetworkWithAnAddressIsConnected) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    EXPECT_EQ(see(Status::connected), Outcome::connected);
}

TEST_F(AttemptOf, AnEndAfterTwoSecondsOfSilenceIsNoAnswer) {
    pass(2s);
    EXPECT_EQ(see(Status::disconnected), Outcome::notAnswering);
}

TEST_F(AttemptOf, TheTwoSecondsBeginAnewWhenAScanEnds) {
    setScanning(true);
    EXPECT_EQ(see(Status::connectingWifi), std::nullopt);
    pass(3s);
    setScanning(false);
    EXPECT_EQ(see(Status::connectingWifi), std::nullopt);
    pass(2s);
    EXPECT_EQ(see(Status::disconnected), Outcome::notAnswering);
}

TEST_F(AttemptOf, AScanWhoseEndIsHeardOfLateCountsFromItsEnd) {
    setScanning(true);
    EXPECT_EQ(see(Status::connectingWifi), std::nullopt);
    pass(3s);
    setScanning(false);
    pass(2s);
    EXPECT_EQ(see(Status::disconnected), Outcome::notAnswering);
}

TEST_F(AttemptOf, AScanAfterTheEndDoesNotCount) {
    pass(2s);
    sight_.info.disconnectTime = sight_.now;
    pass(1s);
    setScanning(false);
    sight_.info.status = Status::disconnected;
    EXPECT_EQ(attempt_.see(sight_), Outcome::notAnswering);
}

class AttemptThatEnds : public AttemptTest, public ::testing::WithParamInterface<int> {};

TEST_P(AttemptThatEnds, AtAnotherTimeWasRefused) {
    pass(std::chrono::milliseconds(GetParam()));
    EXPECT_EQ(see(Status::disconnected), Outcome::refused) << GetParam() << " ms";
}

INSTANTIATE_TEST_SUITE_P(Milliseconds, AttemptThatEnds, ::testing::Values(0, 300, 1700, 2600, 4500));

TEST_F(AttemptOf, AnotherNetworkIsARefusal) {
    EXPECT_EQ(see(Status::connected, "Attic"), Outcome::refused);
}

TEST_F(AttemptOf, ALinkThatBreaksBeforeThereIsAnAddressIsLost) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    pass(2s);
    EXPECT_EQ(see(Status::disconnected), Outcome::lost);
}

TEST_F(AttemptOf, ALinkWithoutAnAddressForHalfAMinuteIsToldOf) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    pass(29s);
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    pass(1s);
    EXPECT_EQ(see(Status::connectingIP), Outcome::noAddress);
}

TEST_F(AttemptOf, WifiThatStopsEndsIt) {
    sight_.running = false;
    EXPECT_EQ(see(Status::disconnected), Outcome::stopped);
}

TEST_F(AttemptOf, WhatWasBeforeTheLibraryTookItUpDoesNotCount) {
    attempt_ = Attempt("Home", sight_.now);
    EXPECT_EQ(see(Status::disconnected), std::nullopt);
    EXPECT_EQ(see(Status::connected, "Attic"), std::nullopt);
    EXPECT_EQ(see(Status::connectingWifi), std::nullopt);
    EXPECT_EQ(see(Status::connected), Outcome::connected);
}

}  // namespace
}  // namespace kaz::test
