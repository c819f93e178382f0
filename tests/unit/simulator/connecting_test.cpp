#include "unit/simulator/device_fixture.h"

#include <cstdint>

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;

class Connecting : public DeviceTest {
  protected:
    bool lastStateIs(const std::string& state) {
        return client_->waitUntil([&] {
            const auto states = client_->valuesOf("State");
            return !states.empty() && states.back() == state;
        });
    }
};

TEST_F(Connecting, PassesEveryStateInOrder) {
    start({accessPoint("Home", Security::wpa2, "correct horse")});
    select(addNetwork(pskNetwork("Home", "correct horse")));
    ASSERT_TRUE(lastStateIs("completed"));
    EXPECT_THAT(client_->valuesOf("State"),
                ElementsAre("inactive", "scanning", "authenticating", "associating", "associated",
                            "4way_handshake", "group_handshake", "completed"));
}

TEST_F(Connecting, CompletesWithTheRightKeyForEveryKindOfSecurity) {
    struct Row {
        AccessPoint accessPoint;
        Settings settings;
        const char* authMode;
    };
    const Row rows[] = {
        {accessPoint("a", Security::open), openNetwork("a"), "NONE"},
        {accessPoint("b", Security::wep, "abcde"),
         {{"ssid", "b"}, {"key_mgmt", "NONE"}, {"wep_key0", "abcde"}},
         "NONE"},
        {accessPoint("c", Security::wpa, "password"), pskNetwork("c", "password"), "WPA-PSK"},
        {accessPoint("d", Security::wpa2, "password"), pskNetwork("d", "password"), "WPA2-PSK"},
        {accessPoint("e", Security::wpa2Wpa3, "password"), pskNetwork("e", "password"), "WPA2-PSK"},
        {accessPoint("f", Security::wpa2Wpa3, "password"), saeNetwork("f", "password"), "SAE"},
        {accessPoint("g", Security::wpa3, "password"), saeNetwork("g", "password"), "SAE"},
    };
    std::vector<AccessPoint> around;
    for (const Row& row : rows) {
        around.push_back(row.accessPoint);
    }
    start(around);
    for (const Row& row : rows) {
        const std::string network = addNetwork(row.settings);
        select(network);
        ASSERT_TRUE(reaches("completed")) << row.accessPoint.ssid;
        EXPECT_EQ(client_->get(supplicantInterface, "CurrentNetwork"), network);
        EXPECT_EQ(client_->get(supplicantInterface, "CurrentAuthMode"), row.authMode) << row.accessPoint.ssid;
        const Target bss = bssAt(client_->get(supplicantInterface, "CurrentBSS"));
        EXPECT_EQ(client_->get(bss, "SSID"), nlohmann::json({row.accessPoint.ssid.at(0)}));
    }
}

TEST_F(Connecting, EndsInDisconnectedWithReason15WhenThePresharedKeyIsWrong) {
    start({accessPoint("Home", Security::wpa2, "correct horse")});
    select(addNetwork(pskNetwork("Home", "wrong horse")));
    ASSERT_TRUE(reaches("4way_handshake"));
    const auto tells = [](const Signal& signal, const char* property, const nlohmann::json& value) {
        return signal.interface == "org.freedesktop.DBus.Properties" &&
               signal.arguments.at(1).contains(property) && signal.arguments.at(1).at(property) == value;
    };
    ASSERT_TRUE(client_->waitForSignal("PropertiesChanged",
                                       [&](const Signal& s) { return tells(s, "DisconnectReason", 15); }));
    EXPECT_TRUE(client_->waitForSignal("PropertiesChanged", [&](const Signal& s) {
        return tells(s, "State", "disconnected") && tells(s, "CurrentNetwork", "/") &&
               tells(s, "CurrentBSS", "/");
    }));
}

// One network per test, because the supplicant retries a refused network as soon as its pause is over.
struct Refusal {
    const char* name;
    Settings settings;
    int status;
};

class ConnectingIsRefused : public Connecting, public ::testing::WithParamInterface<Refusal> {};

TEST_P(ConnectingIsRefused, BeforeAssociationAndEndsInDisconnected) {
    AccessPoint full = accessPoint("full", Security::open);
    full.full = true;
    start({accessPoint("old", Security::wep, "abcde"), accessPoint("new", Security::wpa3, "password"), full});
    select(addNetwork(GetParam().settings));
    ASSERT_TRUE(reaches("authenticating"));
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(client_->get(supplicantInterface, "AuthStatusCode"), GetParam().status);
    EXPECT_EQ(client_->get(supplicantInterface, "DisconnectReason"), 0);
}

INSTANTIATE_TEST_SUITE_P(
    ByTheAccessPoint, ConnectingIsRefused,
    ::testing::Values(
        Refusal{"WrongWepKey", {{"ssid", "old"}, {"key_mgmt", "NONE"}, {"wep_key0", "edcba"}}, 15},
        Refusal{"WrongSaePassword", saeNetwork("new", "other"), 1},
        Refusal{"NoRoom", openNetwork("full"), 17}),
    [](const auto& made) { return made.param.name; });

TEST_F(Connecting, TriesARefusedNetworkAgainAfterAPause) {
    start({accessPoint("Home", Security::wpa2, "correct horse")});
    select(addNetwork(pskNetwork("Home", "wrong horse")));
    ASSERT_TRUE(reaches("4way_handshake"));
    ASSERT_TRUE(reaches("disconnected"));
    ASSERT_TRUE(reaches("scanning"));
    EXPECT_TRUE(reaches("4way_handshake"));
}

TEST_F(Connecting, GoesOnScanningForANetworkThatIsNotThere) {
    start({accessPoint("Home", Security::wpa2, "correct horse")});
    select(addNetwork(openNetwork("Elsewhere")));
    ASSERT_TRUE(reaches("scanning"));
    for (int scans = 0; scans < 3; ++scans) {
        ASSERT_TRUE(client_->waitForSignal("ScanDone", [](const Signal&) { return true; }));
    }
    EXPECT_EQ(client_->get(supplicantInterface, "State"), "scanning");
    device_->addAccessPoint(accessPoint("Elsewhere", Security::open));
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Connecting, FindsAHiddenNetworkOnlyWithScanSsid) {
    AccessPoint hidden = accessPoint("Secret", Security::open);
    hidden.hidden = true;
    start({hidden});
    select(addNetwork(openNetwork("Secret")));
    ASSERT_TRUE(client_->waitForSignal("ScanDone", [](const Signal&) { return true; }));
    ASSERT_TRUE(client_->waitForSignal("ScanDone", [](const Signal&) { return true; }));
    EXPECT_EQ(client_->get(supplicantInterface, "State"), "scanning");
    Settings settings = openNetwork("Secret");
    settings.emplace_back("scan_ssid", std::int64_t{1});
    select(addNetwork(settings));
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Connecting, LosesTheConnectionWithTheReasonOfTheAccessPoint) {
    start({accessPoint("Cafe", Security::open)});
    select(addNetwork(openNetwork("Cafe")));
    ASSERT_TRUE(reaches("completed"));
    device_->deauthenticate(2);
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(client_->get(supplicantInterface, "DisconnectReason"), 2);
    EXPECT_TRUE(reaches("completed"));
    device_->dropLink();
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(client_->get(supplicantInterface, "DisconnectReason"), -4);
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Connecting, MovesToTheOtherAccessPointOfANetworkWhenOneGoes) {
    AccessPoint near = accessPoint("Home", Security::wpa2, "correct horse");
    near.bssid = "02:00:00:00:00:01";
    near.signal = -40;
    AccessPoint far = near;
    far.bssid = "02:00:00:00:00:02";
    far.signal = -80;
    start({far, near});
    select(addNetwork(pskNetwork("Home", "correct horse")));
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(client_->get(bssAt(client_->get(supplicantInterface, "CurrentBSS")), "Signal"), -40);
    ASSERT_TRUE(device_->removeAccessPoint(near.bssid));
    ASSERT_TRUE(reaches("disconnected"));
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(client_->get(bssAt(client_->get(supplicantInterface, "CurrentBSS")), "Signal"), -80);
}

TEST_F(Connecting, PollsTheSignalOfTheConnectionOnly) {
    AccessPoint cafe = accessPoint("Cafe", Security::open);
    cafe.bssid = "02:00:00:00:00:01";
    start({cafe});
    EXPECT_EQ(errorOf(supplicantInterface, "SignalPoll"), "org.freedesktop.DBus.Error.Failed");
    select(addNetwork(openNetwork("Cafe")));
    ASSERT_TRUE(reaches("completed"));
    ASSERT_TRUE(device_->setSignal(cafe.bssid, -77));
    const auto poll = client_->call(supplicantInterface, "SignalPoll").at(0);
    EXPECT_EQ(poll.at("rssi"), -77);
    EXPECT_EQ(poll.at("frequency"), 2412);
    EXPECT_TRUE(poll.contains("linkspeed"));
    EXPECT_TRUE(poll.contains("noise"));
}

}  // namespace
}  // namespace kaz::sim::test
