#include "vm/access_point.h"
#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

#include <algorithm>
#include <string>

namespace kaz::vm {
namespace {

using Switching = DeviceTest;

bool never(const std::vector<wifi::ConnectionInfo>& history, Status status, const std::string& ssid) {
    return std::none_of(history.begin(), history.end(), [&](const wifi::ConnectionInfo& info) {
        return info.status == status && info.ssid == ssid;
    });
}

TEST_F(Switching, ConnectingToAnotherNetworkEndsTheConnectionAsTheUsersWish) {
    ASSERT_TRUE(device().connects(wpa2Network));
    device().clearHistory();
    ASSERT_TRUE(device().connects(openNetwork));
    const wifi::ConnectionInfo info = manager().connectionInfo();
    EXPECT_EQ(info.disconnectSsid, wpa2Network.ssid);
    EXPECT_EQ(info.disconnectReason, Reason::causedByUser);
    EXPECT_TRUE(never(device().history(), Status::disconnected, ""));
}

TEST_F(Switching, ANewKeyForTheNetworkInUseLeavesOneConfiguration) {
    AccessPoint accessPoint("wpa2");
    ASSERT_TRUE(device().connects(wpa2Network));
    wifi::ConnectionSettings again = wpa2Network;
    again.password = "another-secret";
    accessPoint.reconfigure("wpa_passphrase=another-secret");
    device().clearHistory();
    ASSERT_EQ(manager().connect(again), wifi::ConnectResult::ok);
    ASSERT_TRUE(device().reaches(Status::connected, again.ssid));
    EXPECT_TRUE(device().eventually([] {
        const auto saved = savedNetwork("Kaz WPA2");  // the only block
        return saved && saved->at("psk") == "\"another-secret\"";
    }));
    EXPECT_EQ(savedNetworks().size(), 1U);
}

TEST_F(Switching, ASavedNetworkConnectsByItsName) {
    ASSERT_TRUE(device().connects(wpa2Network));
    ASSERT_TRUE(device().connects(wpaNetwork));
    manager().connectConfigured(wpa2Network.ssid);
    EXPECT_TRUE(device().reaches(Status::connected, wpa2Network.ssid));
    EXPECT_TRUE(device().eventually([] {
        const auto saved = savedNetwork("Kaz WPA2");
        return saved && saved->at("priority") == "2";
    }));
    EXPECT_EQ(savedNetworks().size(), 2U);
}

TEST_F(Switching, OfTwoQuickConnectsTheLastWins) {
    ASSERT_EQ(manager().connect(wpa2Network), wifi::ConnectResult::ok);
    ASSERT_EQ(manager().connect(openNetwork), wifi::ConnectResult::ok);
    ASSERT_TRUE(device().reaches(Status::connected, openNetwork.ssid));
    EXPECT_TRUE(device().eventually([] { return savedNetworks().size() == 2; }));
    EXPECT_TRUE(device().eventually([&] {
        const wifi::ConnectionInfo last = device().history().back();
        return last.ssid == openNetwork.ssid && last.status == Status::connected;
    }));
    EXPECT_NE(run("wpa_cli -p /run/wpa_supplicant -i wlan0 status").find("\nssid=Kaz Open\n"),
              std::string::npos);
}

TEST_F(Switching, DisconnectingDuringTheHandshakeEndsTheAttempt) {
    ASSERT_EQ(manager().connect(peapNetwork), wifi::ConnectResult::ok);
    // EAP has the longest handshake. It begins when the supplicant is associated.
    ASSERT_TRUE(log().waitForText(spdlog::level::debug, "State=associated"));
    manager().disconnect();
    ASSERT_TRUE(device().reaches(Status::disconnected));
    const wifi::ConnectionInfo info = manager().connectionInfo();
    EXPECT_EQ(info.disconnectSsid, peapNetwork.ssid);
    EXPECT_EQ(info.disconnectReason, Reason::causedByUser);
    EXPECT_TRUE(device().eventually([] {
        return run("wpa_cli -p /run/wpa_supplicant -i wlan0 status").find("wpa_state=DISCONNECTED") !=
               std::string::npos;
    }));
    EXPECT_EQ(manager().connectionInfo().status, Status::disconnected);
    EXPECT_TRUE(never(device().history(), Status::connected, peapNetwork.ssid));
}

TEST_F(Switching, DisconnectingKeepsTheConfigurationAndStaysDisconnected) {
    ASSERT_TRUE(device().connects(wpa2Network));
    manager().disconnect();
    ASSERT_TRUE(device().reaches(Status::disconnected));
    EXPECT_EQ(manager().connectionInfo().disconnectReason, Reason::causedByUser);
    // In the list again, as a configured network.
    EXPECT_TRUE(device().eventually([&] {
        const auto all = manager().networks();
        return std::any_of(all.begin(), all.end(), [](const wifi::WifiNetwork& one) {
            return one.ssid == "Kaz WPA2" && one.configured;
        });
    }));
    manager().connectConfigured(wpa2Network.ssid);
    EXPECT_TRUE(device().reaches(Status::connected, wpa2Network.ssid));
}

}  // namespace
}  // namespace kaz::vm
