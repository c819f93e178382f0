#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"

#include <string>

namespace kaz::vm {
namespace {

class Restart : public DeviceTest {
  protected:
    void SetUp() override {
        DeviceTest::SetUp();
        ASSERT_TRUE(device().connects(wpa2Network));
        device().clearHistory();
        before_ = device().enabledChanges();
    }

    // The Manager detached from the supplicant and attached to the new one, which connected by itself.
    bool comesBack() {
        return device().eventually([this] { return device().enabledChanges() >= before_ + 2; }) &&
               device().attaches() && device().reaches(Status::connected, wpa2Network.ssid);
    }

  private:
    int before_ = 0;
};

TEST_F(Restart, ASupplicantThatIsKilledIsGoneAndUsedAgainOnceItIsBack) {
    run("systemctl kill --signal=KILL wpa_supplicant");
    ASSERT_TRUE(device().detaches());
    EXPECT_TRUE(device().reaches(Status::disconnected));
    manager().setEnabled(true);
    ASSERT_TRUE(comesBack());
    EXPECT_TRUE(device().connects(openNetwork));
}

TEST_F(Restart, ASupplicantThatSystemdRestartsAfterItWasKilledIsUsedAgain) {
    run("mkdir -p /run/systemd/system/wpa_supplicant.service.d && "
        "printf '[Service]\\nRestart=on-failure\\nRestartSec=100ms\\n' "
        ">/run/systemd/system/wpa_supplicant.service.d/restart.conf && systemctl daemon-reload");
    run("systemctl kill --signal=KILL wpa_supplicant");
    EXPECT_TRUE(comesBack());
    EXPECT_TRUE(device().connects(openNetwork));
    run("rm -r /run/systemd/system/wpa_supplicant.service.d && systemctl daemon-reload");
}

TEST_F(Restart, ASupplicantThatIsRestartedIsUsedAgain) {
    run("systemctl restart wpa_supplicant");
    ASSERT_TRUE(comesBack());
    EXPECT_TRUE(device().connects(openNetwork));
}

// As after a reset of the driver. The new interface has another path.
TEST_F(Restart, AnInterfaceThatIsRemovedAndMadeAgainIsUsedAgain) {
    const std::string supplicant = "fi.w1.wpa_supplicant1 /fi/w1/wpa_supplicant1 fi.w1.wpa_supplicant1 ";
    run("busctl call " + supplicant + "RemoveInterface o $(busctl call " + supplicant +
        "GetInterface s wlan0 | cut -d '\"' -f 2)");
    ASSERT_TRUE(device().detaches());
    EXPECT_TRUE(device().reaches(Status::disconnected));
    run("busctl call " + supplicant +
        "CreateInterface 'a{sv}' 3 Ifname s wlan0 Driver s nl80211 ConfigFile s "
        "/etc/wpa_supplicant/device.conf");
    ASSERT_TRUE(comesBack());
    EXPECT_TRUE(device().connects(openNetwork));
}

TEST_F(Restart, NetworkdRestartedLeavesTheConnectionConnected) {
    run("systemctl restart systemd-networkd");
    ASSERT_TRUE(device().eventually([] {
        return succeeds(
            "busctl get-property org.freedesktop.network1 /org/freedesktop/network1 "
            "org.freedesktop.network1.Manager OnlineState | grep -q '\"online\"'");
    }));
    EXPECT_TRUE(device().reaches(Status::connected, wpa2Network.ssid));
    EXPECT_TRUE(device().connects(openNetwork));
}

TEST_F(Restart, TheInterfaceGoingDownIsALossAndComingUpReconnects) {
    run("ip link set wlan0 down");
    ASSERT_TRUE(device().reaches(Status::disconnected));
    EXPECT_EQ(manager().connectionInfo().disconnectReason, Reason::causedBySystem);
    run("ip link set wlan0 up");
    EXPECT_TRUE(device().reaches(Status::connected, wpa2Network.ssid));
}

}  // namespace
}  // namespace kaz::vm
