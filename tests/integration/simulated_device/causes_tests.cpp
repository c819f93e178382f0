// The cause of every failure that the simulated device can produce.
#include "support/device_fixture/device_fixture.h"
#include "support/printed_values/printed_details.h"

#include <chrono>
#include <string>

namespace kaz::test {
namespace {

using wifi::Cause;
using wifi::Certainty;
using wifi::ConnectionSettings;
using wifi::ConnectResult;
using wifi::Outcome;
using wifi::SecurityMode;
using wifi::Stage;

class Causes : public DeviceFixture {
  protected:
    // Waits for an end with this cause, which may be followed by others: the supplicant goes on by itself.
    bool ends(const std::string& ssid, Cause cause, Certainty certainty) {
        const bool ended = user().waitUntil([&] {
            outcome = manager().connectionDetails().lastOutcome;
            return outcome.ssid == ssid && outcome.cause == cause && outcome.certainty == certainty;
        });
        EXPECT_TRUE(ended) << ::testing::PrintToString(outcome);
        return ended;
    }

    // The network is forgotten then, so that the supplicant does not try it during the next attempt.
    bool fails(const ConnectionSettings& settings, Cause cause, Certainty certainty) {
        EXPECT_EQ(manager().connect(settings), ConnectResult::ok);
        const bool ended = ends(settings.ssid, cause, certainty);
        manager().forgetNetwork(settings.ssid);
        return ended;
    }

    Outcome outcome;
};

TEST_F(Causes, AreToldForWrongKeysOfEveryKind) {
    start();
    // The supplicant tries the key again by itself.
    ASSERT_TRUE(fails(home("wrong password"), Cause::wrongKey, Certainty::certain));
    EXPECT_EQ(outcome.stage, Stage::keyExchange);
    EXPECT_EQ(outcome.evidence.reasonCode, 15);
    ASSERT_TRUE(
        fails(settings("Future", SecurityMode::sae, "wrong password"), Cause::wrongKey, Certainty::certain));
    EXPECT_EQ(outcome.evidence.authenticationStatus, 1);
    ASSERT_TRUE(fails(settings("Old", SecurityMode::wep, "54321"), Cause::wrongKey, Certainty::certain));
    EXPECT_EQ(outcome.evidence.authenticationStatus, 15);
    ConnectionSettings office = settings("Office", SecurityMode::enterprise, "wrong password");
    office.identity = "alice";
    ASSERT_TRUE(fails(office, Cause::eapRejected, Certainty::certain));
    EXPECT_EQ(outcome.evidence.reasonCode, 23);
}

TEST_F(Causes, AreToldForNetworksThatCannotBeJoined) {
    for (sim::AccessPoint& point : neighbourhood.accessPoints) {
        point.full = point.ssid == "Cafe";
    }
    neighbourhood.times.scanInterval = std::chrono::hours(24);  // a scan pauses the timeout of the attempt
    start();
    ASSERT_TRUE(fails(cafe(), Cause::full, Certainty::certain));
    EXPECT_EQ(outcome.evidence.authenticationStatus, 17);
    ASSERT_TRUE(fails(settings("Elsewhere", SecurityMode::rsnPsk, "12345678"), Cause::outOfRange,
                      Certainty::certain));
    ASSERT_TRUE(fails(settings("Future", SecurityMode::rsnPsk, "12345678"), Cause::nothingInCommon,
                      Certainty::certain));
    EXPECT_TRUE(outcome.evidence.demands.sae);
}

TEST_F(Causes, AreToldForLostConnections) {
    start();
    connect(home());
    device().deauthenticate(7);
    ASSERT_TRUE(ends("Home", Cause::deauthenticated, Certainty::certain));
    EXPECT_EQ(outcome.evidence.reasonCode, 7);
    ASSERT_TRUE(user().waitForStatus(wifi::ConnectionInfo::Status::connected, "Home"));
    device().dropLink();
    ASSERT_TRUE(ends("Home", Cause::accessPointGone, Certainty::probable));
    ASSERT_TRUE(user().waitForStatus(wifi::ConnectionInfo::Status::connected, "Home"));
    manager().disconnect();
    ASSERT_TRUE(ends("Home", Cause::givenUp, Certainty::certain));
    connect(home());
    device().crashSupplicant();
    ASSERT_TRUE(ends("Home", Cause::supplicantGone, Certainty::certain));
}

TEST_F(Causes, AreToldForASupplicantThatDoesNotAnswer) {
    start();
    device().orderFault({.peer = "supplicant", .member = "AddNetwork", .kind = sim::FaultKind::noReply});
    ASSERT_TRUE(fails(cafe(), Cause::supplicantSilent, Certainty::certain));
    EXPECT_EQ(outcome.stage, Stage::requested);
    device().clearFaults();
    device().orderFault({.peer = "supplicant", .member = "AddNetwork", .kind = sim::FaultKind::error});
    ASSERT_TRUE(fails(cafe(), Cause::requestRefused, Certainty::certain));
}

}  // namespace
}  // namespace kaz::test
