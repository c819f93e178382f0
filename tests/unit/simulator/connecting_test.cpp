#include "unit/simulator/device_fixture.h"

#include <cstdint>

namespace kaz::sim::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::Not;

class Connecting : public DeviceTest {
  protected:
    json signalOfTheBss() { return client_->get(bssAt(get("CurrentBSS")), "Signal"); }
};

TEST_F(Connecting, PassesEveryStateInOrder) {
    startInRangeOf({home});
    select(addNetwork(pskNetwork("Home", "correct horse")));
    ASSERT_TRUE(client_->becomes("State", "completed"));
    EXPECT_THAT(client_->valuesOf("State"),
                ElementsAre("inactive", "scanning", "authenticating", "associating", "associated",
                            "4way_handshake", "group_handshake", "completed"));
}

TEST_F(Connecting, CompletesWithTheRightKeyForEveryKindOfSecurity) {
    struct Row {
        std::string ssid;
        Security security;
        Settings settings;
        const char* authMode;
    };
    const Row rows[] = {
        {"a", Security::open, openNetwork("a"), "NONE"},
        {"b", Security::wep, {{"ssid", "b"}, {"key_mgmt", "NONE"}, {"wep_key0", "13 characters"}}, "NONE"},
        {"c", Security::wpa, pskNetwork("c", "13 characters"), "WPA-PSK"},
        {"d", Security::wpa2, pskNetwork("d", "13 characters"), "WPA2-PSK"},
        {"e", Security::wpa2Wpa3, pskNetwork("e", "13 characters"), "WPA2-PSK"},
        {"f", Security::wpa2Wpa3, saeNetwork("f", "13 characters"), "SAE"},
        {"g", Security::wpa3, saeNetwork("g", "13 characters"), "SAE"},
    };
    std::vector<AccessPoint> around;
    for (const Row& row : rows) {
        around.push_back({.ssid = row.ssid, .security = row.security, .password = "13 characters"});
    }
    startInRangeOf(around);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.ssid);
        const std::string network = addNetwork(row.settings);
        select(network);
        ASSERT_TRUE(reaches("completed"));
        EXPECT_EQ(get("CurrentNetwork"), network);
        EXPECT_EQ(get("CurrentAuthMode"), row.authMode);
        EXPECT_EQ(client_->get(bssAt(get("CurrentBSS")), "SSID"), json({row.ssid.at(0)}));
    }
}

TEST_F(Connecting, EndsInDisconnectedWithReason15WhenThePresharedKeyIsWrong) {
    startInRangeOf({home});
    select(addNetwork(pskNetwork("Home", "wrong horse")));
    ASSERT_TRUE(reaches("4way_handshake"));
    ASSERT_TRUE(changes({{"DisconnectReason", 15}}));
    EXPECT_TRUE(changes({{"State", "disconnected"}, {"CurrentNetwork", "/"}, {"CurrentBSS", "/"}}));
}

// One network per test, because the supplicant retries a refused network as soon as its pause is over.
struct Refusal {
    const char* name;
    Settings settings;
    int status;
};

class ConnectingIsRefused : public Connecting, public ::testing::WithParamInterface<Refusal> {};

TEST_P(ConnectingIsRefused, BeforeAssociationAndEndsInDisconnected) {
    startInRangeOf({{.ssid = "old", .security = Security::wep, .password = "abcde"},
                    {.ssid = "new", .security = Security::wpa3, .password = "password"},
                    {.ssid = "full", .full = true}});
    select(addNetwork(GetParam().settings));
    ASSERT_TRUE(reaches("authenticating"));
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(get("AuthStatusCode"), GetParam().status);
    EXPECT_EQ(get("DisconnectReason"), 0);
}

INSTANTIATE_TEST_SUITE_P(
    ByTheAccessPoint, ConnectingIsRefused,
    ::testing::Values(
        Refusal{"WrongWepKey", {{"ssid", "old"}, {"key_mgmt", "NONE"}, {"wep_key0", "edcba"}}, 15},
        Refusal{"WrongSaePassword", saeNetwork("new", "other"), 1},
        Refusal{"NoRoom", openNetwork("full"), 17}),
    [](const auto& made) { return made.param.name; });

TEST_F(Connecting, TriesARefusedNetworkAgainAfterAPause) {
    startInRangeOf({home});
    select(addNetwork(pskNetwork("Home", "wrong horse")));
    ASSERT_TRUE(reaches("4way_handshake"));
    ASSERT_TRUE(reaches("disconnected"));
    ASSERT_TRUE(reaches("scanning"));
    EXPECT_TRUE(reaches("4way_handshake"));
}

TEST_F(Connecting, GoesOnScanningForANetworkThatIsNotThere) {
    startInRangeOf({home});
    select(addNetwork(openNetwork("Elsewhere")));
    ASSERT_TRUE(reaches("scanning"));
    for (int scans = 0; scans < 3; ++scans) {
        ASSERT_TRUE(client_->waitForSignal("ScanDone"));
    }
    EXPECT_EQ(get("State"), "scanning");
    device_->addAccessPoint({.ssid = "Elsewhere"});
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Connecting, FindsAHiddenNetworkOnlyWithScanSsid) {
    startInRangeOf({{.ssid = "Secret", .hidden = true}});
    select(addNetwork(openNetwork("Secret")));
    ASSERT_TRUE(client_->waitForSignal("ScanDone"));
    ASSERT_TRUE(client_->waitForSignal("ScanDone"));
    EXPECT_EQ(get("State"), "scanning");
    Settings settings = openNetwork("Secret");
    settings.emplace_back("scan_ssid", std::int64_t{1});
    select(addNetwork(settings));
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Connecting, LosesTheConnectionWithTheReasonOfTheAccessPoint) {
    ASSERT_NO_FATAL_FAILURE(startConnected());
    device_->deauthenticate(2);
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(get("DisconnectReason"), 2);
    EXPECT_TRUE(reaches("completed"));
    device_->dropLink();
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(get("DisconnectReason"), -4);
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Connecting, MovesToTheOtherAccessPointOfANetworkWhenOneGoes) {
    AccessPoint near = home;
    near.bssid = "02:00:00:00:00:01";
    near.signal = -40;
    AccessPoint far = home;
    far.signal = -80;
    startInRangeOf({far, near});
    select(addNetwork(pskNetwork("Home", "correct horse")));
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(signalOfTheBss(), -40);
    ASSERT_TRUE(device_->removeAccessPoint(near.bssid));
    ASSERT_TRUE(reaches("disconnected"));
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(signalOfTheBss(), -80);
}

TEST_F(Connecting, WaitsInTheHandshakeWhileTheAccessPointIsBusy) {
    AccessPoint busy = home;
    busy.bssid = "02:00:00:00:00:01";
    busy.busy = true;
    startInRangeOf({busy});
    const std::string network = addNetwork(pskNetwork("Home", "correct horse"));
    select(network);
    ASSERT_TRUE(reaches("4way_handshake"));
    const json bss = get("CurrentBSS");
    client_->signals().clear();
    select(network);  // which it joins already
    EXPECT_EQ(get("State"), "4way_handshake");
    ASSERT_TRUE(device_->alterAccessPoint(busy.bssid, [](AccessPoint& point) { point.busy = false; }));
    ASSERT_TRUE(client_->becomes("State", "completed"));
    EXPECT_EQ(get("CurrentBSS"), bss);
    EXPECT_TRUE(client_->valuesOf("CurrentBSS").empty()) << "it was reported before";
    EXPECT_THAT(client_->signals(), Not(Contains(Field(&Signal::member, "NetworkSelected"))));
}

TEST_F(Connecting, PollsTheSignalOfTheConnectionOnly) {
    const std::string bssid = "02:00:00:00:00:01";
    startInRangeOf({{.ssid = "Cafe", .bssid = bssid}});
    EXPECT_EQ(errorOf(supplicantInterface, "SignalPoll"), "org.freedesktop.DBus.Error.Failed");
    select(addNetwork(openNetwork("Cafe")));
    ASSERT_TRUE(reaches("completed"));
    ASSERT_TRUE(device_->setSignal(bssid, -77));
    const json poll = call("SignalPoll").at(0);
    EXPECT_TRUE(includes(poll, {{"rssi", -77}, {"frequency", 2412}})) << poll;
    EXPECT_TRUE(poll.contains("linkspeed"));
    EXPECT_TRUE(poll.contains("noise"));
}

}  // namespace
}  // namespace kaz::sim::test
