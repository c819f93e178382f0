#include <attempt.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace kaz::test {
namespace {

using Status = wifi::ConnectionInfo::Status;
using Outcome = Attempt::Outcome;

// An attempt to join "Home" that the library has taken up.
class AttemptTest : public ::testing::Test {
  protected:
    AttemptTest() {
        state_.running = true;
        see(Status::connectingWifi);
    }

    std::optional<Outcome> see(Status status, const std::string& ssid = "Home") {
        state_.connection.info.status = status;
        state_.connection.info.ssid = status == Status::disconnected ? "" : ssid;
        return attempt_.see(state_);
    }

    wifi::client::Snapshot state_;
    Attempt attempt_{"Home"};
};

using AttemptOf = AttemptTest;

TEST_F(AttemptOf, ANetworkWithAnAddressIsConnected) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    EXPECT_EQ(see(Status::connected), Outcome::connected);
}

TEST_F(AttemptOf, AnEndBeforeTheLinkIsAFailureWithItsCause) {
    state_.connection.lastOutcome.cause = wifi::Cause::full;
    EXPECT_EQ(see(Status::disconnected), Outcome::failed);
    EXPECT_EQ(attempt_.why().cause, wifi::Cause::full);
}

TEST_F(AttemptOf, AnotherNetworkIsAFailure) {
    EXPECT_EQ(see(Status::connected, "Attic"), Outcome::failed);
}

TEST_F(AttemptOf, ALinkThatBreaksBeforeThereIsAnAddressIsLost) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    state_.connection.lastOutcome.cause = wifi::Cause::weakSignal;
    EXPECT_EQ(see(Status::disconnected), Outcome::lost);
    EXPECT_EQ(attempt_.why().cause, wifi::Cause::weakSignal);
}

TEST_F(AttemptOf, ALinkWithoutAnAddressInTimeIsToldOf) {
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    state_.connection.trouble = wifi::Cause::supplicantSilent;
    EXPECT_EQ(see(Status::connectingIP), std::nullopt);
    state_.connection.trouble = wifi::Cause::noAddress;
    EXPECT_EQ(see(Status::connectingIP), Outcome::noAddress);
}

TEST_F(AttemptOf, WifiThatStopsEndsIt) {
    state_.running = false;
    EXPECT_EQ(see(Status::disconnected), Outcome::stopped);
}

TEST_F(AttemptOf, WhatWasBeforeTheLibraryTookItUpDoesNotCount) {
    attempt_ = Attempt("Home");
    EXPECT_EQ(see(Status::disconnected), std::nullopt);
    EXPECT_EQ(see(Status::connected, "Attic"), std::nullopt);
    EXPECT_EQ(see(Status::connectingWifi), std::nullopt);
    EXPECT_EQ(see(Status::connected), Outcome::connected);
}

}  // namespace
}  // namespace kaz::test
