#include "vm/access_point.h"
#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"

#include <algorithm>
#include <string>

namespace kaz::vm {
namespace {

using Disturbance = DeviceTest;

TEST_F(Disturbance, AnAccessPointThatVanishesIsALossByTheSystemAndItsReturnReconnects) {
    AccessPoint accessPoint("wpa2");
    ASSERT_TRUE(device().connects(wpa2Network));
    device().clearHistory();
    auto start = Clock::now();
    accessPoint.vanish();
    ASSERT_TRUE(device().reaches(Status::disconnected));
    record("seconds_to_notice_loss", Clock::now() - start);
    EXPECT_EQ(manager().connectionInfo().disconnectSsid, wpa2Network.ssid);
    EXPECT_EQ(manager().connectionInfo().disconnectReason, Reason::causedBySystem);
    accessPoint.comeBack();
    start = Clock::now();
    ASSERT_TRUE(device().reaches(Status::connected, wpa2Network.ssid));
    record("seconds_to_reconnect", Clock::now() - start);
}

TEST_F(Disturbance, AStormOfDeauthenticationsEndsConnected) {
    AccessPoint accessPoint("wpa2");
    ASSERT_TRUE(device().connects(wpa2Network));
    device().clearHistory();
    for (int i = 0; i < 20; ++i) {
        accessPoint.deauthenticateAll();
    }
    ASSERT_TRUE(device().loses(wpa2Network.ssid));
    EXPECT_TRUE(device().reaches(Status::connected, wpa2Network.ssid));
}

TEST_F(Disturbance, NewKeysAreNoDisconnect) {
    AccessPoint accessPoint("wpa2");
    accessPoint.reconfigure("wpa_group_rekey=2");
    ASSERT_TRUE(device().connects(wpa2Network));
    device().clearHistory();
    const std::string rekeyed =
        "journalctl --boot --unit=wpa_supplicant | grep -c 'Group rekeying completed'";
    const int before = std::stoi(run(rekeyed + " || true"));
    ASSERT_TRUE(device().eventually([&] { return std::stoi(run(rekeyed + " || true")) >= before + 2; }));
    for (const wifi::ConnectionInfo& info : device().history()) {
        EXPECT_EQ(info.status, Status::connected) << ::testing::PrintToString(info);
    }
}

}  // namespace
}  // namespace kaz::vm
