// Every transition of the published status, from every state.
#include "unit/connection_info/tracker_fixture.h"

#include <optional>
#include <ostream>
#include <string>

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

// All events happen 1000 ms after the state was reached, and on BSSs at -50 dBm.
struct From {
    const char* name;
    bool attemptPending;
    ConnectionInfo::Status status;
    std::string ssid;
};

std::ostream& operator<<(std::ostream& out, const From& from) {
    return out << from.name;
}

class StatusTransition : public TrackerTest, public ::testing::WithParamInterface<From> {
  protected:
    void SetUp() override {
        const std::string name = GetParam().name;
        if (name == "attempting") {
            tracker.notifyAboutConnectionAttempt("Home");
            clock->advance(1s);
        } else if (name == "selected") {
            tracker.setCurrentNetworkSsid("Home");
            clock->advance(1s);
        } else if (name == "connecting") {
            becomeConnecting("Home");
        } else if (name == "connectingIP") {
            becomeConnectingIP("Home");
        } else if (name == "connected") {
            becomeConnected("Home");
        } else {
            clock->advance(1s);
        }
        ASSERT_EQ(tracker.getConnectionInfo().status, GetParam().status);
        ASSERT_EQ(tracker.getConnectionInfo().ssid, GetParam().ssid);
    }

    // The disconnect record that the event leaves; empty if the state was disconnected.
    std::string recorded(const std::string& reason) const {
        return GetParam().status == ConnectionInfo::Status::disconnected
                   ? ""
                   : ", " + reason + " 'Home' @ 1000 ms";
    }
};

INSTANTIATE_TEST_SUITE_P(
    FromEveryState, StatusTransition,
    ::testing::Values(From{"disconnected", false, ConnectionInfo::Status::disconnected, ""},
                      From{"attempting", true, ConnectionInfo::Status::connectingWifi, "Home"},
                      From{"selected", true, ConnectionInfo::Status::connectingWifi, "Home"},
                      From{"connecting", false, ConnectionInfo::Status::connectingWifi, "Home"},
                      From{"connectingIP", false, ConnectionInfo::Status::connectingIP, "Home"},
                      From{"connected", false, ConnectionInfo::Status::connected, "Home"}),
    [](const auto& state) { return state.param.name; });

TEST_P(StatusTransition, ConnectPublishesConnectingWifi) {
    tracker.notifyAboutConnectionAttempt("Cafe");
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -100" + recorded("causedByUser"));
}

TEST_P(StatusTransition, SelectionOfAnotherNetworkPublishesConnectingWifi) {
    tracker.setCurrentNetworkSsid("Cafe");
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -100" + recorded("causedBySystem"));
}

TEST_P(StatusTransition, DisconnectPublishesDisconnectedByUser) {
    tracker.notifyAboutDisconnect();
    EXPECT_EQ(published(), (GetParam().status == ConnectionInfo::Status::disconnected
                                ? "disconnected '' -100"
                                : "disconnected '' -100" + recorded("causedByUser")));
}

TEST_P(StatusTransition, ForgettingTheCurrentNetworkPublishesDisconnectedByUser) {
    tracker.notifyAboutForget("Home");
    EXPECT_EQ(published(), (GetParam().status == ConnectionInfo::Status::disconnected
                                ? "disconnected '' 0"
                                : "disconnected '' -100" + recorded("causedByUser")));
}

TEST_P(StatusTransition, ForgettingAnotherNetworkHasNoEffect) {
    const std::string before = published();
    tracker.notifyAboutForget("Cafe");
    EXPECT_EQ(published(), before);
}

TEST_P(StatusTransition, DisconnectedStatusPublishesDisconnectedBySystem) {
    const std::string before = published();
    for (const auto status :
         {noReportYet, SupplicantStatus::InterfaceDisabled, SupplicantStatus::Disconnected}) {
        tracker.setSupplicantStatus(status);
        const bool stays = GetParam().attemptPending || before == "disconnected '' 0";
        EXPECT_EQ(published(), (stays ? before : "disconnected '' -100" + recorded("causedBySystem")))
            << ::testing::PrintToString(status);
    }
}

TEST_P(StatusTransition, DisconnectedStatusAfterAnUndoneDisconnectPublishesDisconnectedByUser) {
    tracker.notifyAboutDisconnect();
    clock->advance(1s);
    reportSuccess("Home");
    for (const auto status :
         {noReportYet, SupplicantStatus::InterfaceDisabled, SupplicantStatus::Disconnected}) {
        tracker.setSupplicantStatus(status);
        EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 2000 ms")
            << ::testing::PrintToString(status);
    }
}

TEST_P(StatusTransition, LinkSetUpOnAnotherNetworkPublishesConnectingWifi) {
    tracker.setCurrentBss(bss("Cafe"));
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -50" + recorded("causedBySystem"));
}

TEST_P(StatusTransition, LinkSetUpOnTheSameNetworkPublishesConnectingWifi) {
    tracker.setCurrentBss(bss("Home"));
    tracker.setSupplicantStatus(SupplicantStatus::Connecting);
    EXPECT_EQ(published(), "connectingWifi 'Home' -50");
}

TEST_P(StatusTransition, LinkToAnotherNetworkPublishesConnectingIp) {
    tracker.setNetworkdIsOnline(false);
    reportSuccess("Cafe");
    EXPECT_EQ(published(), "connectingIP 'Cafe' -50" + recorded("causedBySystem"));
}

TEST_P(StatusTransition, LinkWithAnAddressToAnotherNetworkPublishesConnected) {
    tracker.setNetworkdIsOnline(true);
    reportSuccess("Cafe");
    EXPECT_EQ(published(), "connected 'Cafe' -50" + recorded("causedBySystem"));
}

TEST_P(StatusTransition, LinkToTheSameNetworkPublishesConnectingIpThenConnected) {
    tracker.setNetworkdIsOnline(false);
    reportSuccess("Home");
    EXPECT_EQ(published(), "connectingIP 'Home' -50");
    tracker.setNetworkdIsOnline(true);
    EXPECT_EQ(published(), "connected 'Home' -50");
}

TEST_P(StatusTransition, StoppedSupplicantPublishesDisconnectedWithoutARecord) {
    tracker.setSupplicantState(false);
    EXPECT_EQ(published(), "disconnected '' -100");
    EXPECT_EQ(timeLeft(), std::nullopt);
}

}  // namespace
}  // namespace kaz::test
