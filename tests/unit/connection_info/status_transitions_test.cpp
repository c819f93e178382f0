// Every transition of the published status, from every state.
#include "unit/connection_info/tracker_fixture.h"

#include <ostream>

namespace kaz::test {
namespace {

// All events happen 1000 ms after the state was reached, and on BSSs at -50 dBm.
struct From {
    const char* name;
    Events events;
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
        happen(GetParam().events);
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
    ::testing::Values(
        From{"disconnected", {wait(1s)}, false, ConnectionInfo::Status::disconnected, ""},
        From{"attempting", {attempt("Home"), wait(1s)}, true, ConnectionInfo::Status::connectingWifi, "Home"},
        From{"selected", {select("Home"), wait(1s)}, true, ConnectionInfo::Status::connectingWifi, "Home"},
        From{"connecting", connecting, false, ConnectionInfo::Status::connectingWifi, "Home"},
        From{"connectingIP", connectingIP, false, ConnectionInfo::Status::connectingIP, "Home"},
        From{"connected", connected, false, ConnectionInfo::Status::connected, "Home"}),
    [](const auto& state) { return state.param.name; });

TEST_P(StatusTransition, ConnectPublishesConnectingWifi) {
    happen({attempt("Cafe")});
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -100" + recorded("causedByUser"));
}

TEST_P(StatusTransition, SelectionOfAnotherNetworkPublishesConnectingWifi) {
    happen({select("Cafe")});
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -100" + recorded("causedBySystem"));
}

TEST_P(StatusTransition, DisconnectPublishesDisconnectedByUser) {
    happen({disconnect});
    EXPECT_EQ(published(), (GetParam().status == ConnectionInfo::Status::disconnected
                                ? "disconnected '' -100"
                                : "disconnected '' -100" + recorded("causedByUser")));
}

TEST_P(StatusTransition, ForgettingTheCurrentNetworkPublishesDisconnectedByUser) {
    happen({forget("Home")});
    EXPECT_EQ(published(), (GetParam().status == ConnectionInfo::Status::disconnected
                                ? "disconnected '' 0"
                                : "disconnected '' -100" + recorded("causedByUser")));
}

TEST_P(StatusTransition, ForgettingAnotherNetworkHasNoEffect) {
    const std::string before = published();
    happen({forget("Cafe")});
    EXPECT_EQ(published(), before);
}

TEST_P(StatusTransition, DisconnectedStatusPublishesDisconnectedBySystem) {
    const std::string before = published();
    for (const TrackerEvent& down : {statusMissing, statusDisabled, statusDisconnected}) {
        happen({down});
        const bool stays = GetParam().attemptPending || before == "disconnected '' 0";
        EXPECT_EQ(published(), (stays ? before : "disconnected '' -100" + recorded("causedBySystem")))
            << ::testing::PrintToString(down.status);
    }
}

TEST_P(StatusTransition, DisconnectedStatusAfterAnUndoneDisconnectPublishesDisconnectedByUser) {
    happen({disconnect, wait(1s), bss("Home"), statusConnected});
    for (const TrackerEvent& down : {statusMissing, statusDisabled, statusDisconnected}) {
        happen({down});
        EXPECT_EQ(published(), "disconnected '' -100, causedByUser 'Home' @ 2000 ms")
            << ::testing::PrintToString(down.status);
    }
}

TEST_P(StatusTransition, LinkSetUpOnAnotherNetworkPublishesConnectingWifi) {
    happen({bss("Cafe"), statusConnecting});
    EXPECT_EQ(published(), "connectingWifi 'Cafe' -50" + recorded("causedBySystem"));
}

TEST_P(StatusTransition, LinkSetUpOnTheSameNetworkPublishesConnectingWifi) {
    happen({bss("Home"), statusConnecting});
    EXPECT_EQ(published(), "connectingWifi 'Home' -50");
}

TEST_P(StatusTransition, LinkToAnotherNetworkPublishesConnectingIp) {
    happen({online(false), bss("Cafe"), statusConnected});
    EXPECT_EQ(published(), "connectingIP 'Cafe' -50" + recorded("causedBySystem"));
}

TEST_P(StatusTransition, LinkWithAnAddressToAnotherNetworkPublishesConnected) {
    happen({online(true), bss("Cafe"), statusConnected});
    EXPECT_EQ(published(), "connected 'Cafe' -50" + recorded("causedBySystem"));
}

TEST_P(StatusTransition, LinkToTheSameNetworkPublishesConnectingIpThenConnected) {
    happen({online(false), bss("Home"), statusConnected});
    EXPECT_EQ(published(), "connectingIP 'Home' -50");
    happen({online(true)});
    EXPECT_EQ(published(), "connected 'Home' -50");
}

TEST_P(StatusTransition, StoppedSupplicantPublishesDisconnectedWithoutARecord) {
    happen({supplicantStops});
    EXPECT_EQ(published(), "disconnected '' -100");
    EXPECT_EQ(timeLeft(), std::nullopt);
}

}  // namespace
}  // namespace kaz::test
