// Tests before and after the guest's reboot.
#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

#include <algorithm>
#include <string>

namespace kaz::vm {
namespace {

using BeforeReboot = DeviceTest;

TEST_F(BeforeReboot, NoPasswordIsInALogOfThisBoot) {
    ASSERT_TRUE(device().connects(wpa2Network));
    const std::string logs = run("journalctl --boot --output=cat && cat /run/results/library.log");
    EXPECT_NE(logs.find("Trying to associate"), std::string::npos) << "there is no journal to search";
    EXPECT_NE(logs.find("Setting priority=2 for"), std::string::npos) << "there is no log to search";
    for (const std::string& secret : secrets) {
        EXPECT_EQ(logs.find(secret), std::string::npos);
    }
}

TEST_F(BeforeReboot, NetworksAreForgottenAndWifiIsSwitchedOff) {
    ASSERT_TRUE(device().connects(openNetwork));
    for (int i = 0; i < 2; ++i) {
        run("/opt/guest/device save '\"Kaz WPA\"' wpa-one-secret");
    }
    ASSERT_TRUE(device().connects(wpa2Network));
    manager().forgetNetwork(wpaNetwork.ssid);
    manager().forgetNetwork(wpa2Network.ssid);
    ASSERT_TRUE(device().eventually([] { return savedNetworks().size() == 1 && savedNetwork("Kaz Open"); }));
    manager().setEnabled(false);
    ASSERT_TRUE(device().detaches());
}

// No reset: the device is in the state after the boot.
class AfterReboot : public DeviceTest {
  protected:
    void SetUp() override { startManager(); }
};

TEST_F(AfterReboot, WifiIsStillOffAndTheNetworksAreStillForgotten) {
    EXPECT_FALSE(manager().isEnabled());
    EXPECT_FALSE(succeeds("systemctl is-active wpa_supplicant"));
    EXPECT_EQ(savedNetworks().size(), 1U);

    manager().setEnabled(true);
    ASSERT_TRUE(device().attaches());
    // Without a request: the supplicant connects to the configured network.
    EXPECT_TRUE(device().reaches(Status::connected, openNetwork.ssid));
    manager().scan();
    EXPECT_TRUE(device().eventually([&] {
        const auto all = manager().networks();
        return std::count_if(all.begin(), all.end(), [](const wifi::WifiNetwork& one) {
                   return one.ssid == "Kaz WPA" || one.ssid == "Kaz WPA2";
               }) == 2;
    }));
    for (const wifi::WifiNetwork& one : manager().networks()) {
        EXPECT_FALSE(one.configured) << ::testing::PrintToString(one);
    }
}

}  // namespace
}  // namespace kaz::vm
