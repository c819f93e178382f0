#include "support/device_fixture/device_fixture.h"

#include <algorithm>

namespace kaz::test {
namespace {

using wifi::SecurityMode;
using wifi::WifiNetwork;

using Scanning = DeviceFixture;

TEST_F(Scanning, TheListHasTheNetworksInRangeStrongestFirstWithTheirSecurity) {
    start();
    manager().scan();
    ASSERT_TRUE(user().waitUntil([&] { return manager().networks().size() == 6; }));

    const std::vector<WifiNetwork> expected{
        {"Home", -50, SecurityMode::rsnPsk, false},      {"Office", -66, SecurityMode::enterprise, false},
        {"Cafe", -70, SecurityMode::none, false},        {"Future", -75, SecurityMode::unsupported, false},
        {"Neighbour", -80, SecurityMode::rsnPsk, false}, {"Old", -85, SecurityMode::wep, false},
    };
    EXPECT_EQ(manager().networks(), expected);
}

TEST_F(Scanning, AScanIsPassiveAndReportedWhileItLasts) {
    start();
    manager().scan();
    ASSERT_TRUE(user().waitUntil([&] { return user().scanningCallbacks() >= 2 && !manager().isScanning(); }));
    const auto scans = callsOf("Scan");
    ASSERT_FALSE(scans.empty());
    EXPECT_NE(scans.front().arguments.find("passive"), std::string::npos) << scans.front().arguments;
}

TEST_F(Scanning, TheListFollowsAccessPointsThatComeGoAndMove) {
    start();
    manager().scan();
    ASSERT_TRUE(user().waitForNetwork("Cafe"));

    const std::string ssid("\xff\0\"\\\n", 5);  // bytes, not text
    const std::string bssid = device().addAccessPoint({.ssid = ssid, .signal = -40});
    manager().scan();
    ASSERT_TRUE(user().waitForNetwork(ssid));
    EXPECT_EQ(manager().networks().front().ssid, ssid);

    ASSERT_TRUE(device().removeAccessPoint(bssid));
    ASSERT_TRUE(user().waitUntil([&] {
        if (user().network(ssid)) {
            manager().scan();  // the supplicant forgets a BSS only after some scans without it
            return false;
        }
        return true;
    }));
}

// The supplicant reports the list when an access point comes or goes, but not when only a signal has changed.
TEST_F(Scanning, TheListHasTheNewSignalAfterAScanThatFindsTheSameAccessPoints) {
    start();
    manager().scan();
    ASSERT_TRUE(user().waitForNetwork("Cafe"));
    ASSERT_TRUE(user().waitUntil([&] { return !manager().isScanning(); }));
    ASSERT_TRUE(device().setSignal(accessPoint("Cafe").bssid, -41));
    manager().scan();
    EXPECT_TRUE(user().waitUntil([&] { return user().network("Cafe")->signal == -41; }));
}

TEST_F(Scanning, TwoAccessPointsOfOneNetworkAreOneEntry) {
    sim::AccessPoint second = neighbourhood.accessPoints.front();
    second.bssid = neighbourhood.freeBssid();
    second.signal = -45;
    neighbourhood.accessPoints.push_back(second);
    start();
    manager().scan();
    ASSERT_TRUE(user().waitUntil([&] {
        const auto cafe = user().network("Cafe");
        return cafe && cafe->signal == -45;
    }));
    const auto list = manager().networks();
    EXPECT_EQ(std::count_if(list.begin(), list.end(), [](const auto& entry) { return entry.ssid == "Cafe"; }),
              1);
}

TEST_F(Scanning, AScanWithoutSupplicantDoesNothing) {
    neighbourhood.unitActive = false;
    start();
    manager().scan();
    ASSERT_TRUE(log().waitForText(spdlog::level::debug, "Can't scan, wpa_supplicant isn't running."));
    EXPECT_TRUE(manager().networks().empty());
}

}  // namespace
}  // namespace kaz::test
