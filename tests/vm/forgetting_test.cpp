#include "vm/command.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

#include <string>

namespace kaz::vm {
namespace {

using Forgetting = DeviceTest;

TEST_F(Forgetting, AForgottenNetworkInUseIsLeftAndRemoved) {
    ASSERT_TRUE(device().connects(wpa2Network));
    manager().forgetNetwork(wpa2Network.ssid);
    ASSERT_TRUE(device().reaches(Status::disconnected));
    EXPECT_EQ(manager().connectionInfo().disconnectReason, Reason::causedByUser);
    EXPECT_TRUE(device().eventually([] { return savedNetworks().empty(); }));
    EXPECT_EQ(manager().connectionInfo().status, Status::disconnected);
}

TEST_F(Forgetting, AForgottenNetworkIsRemovedWhileAnotherStaysInUse) {
    ASSERT_TRUE(device().connects(wpa2Network));
    ASSERT_TRUE(device().connects(openNetwork));
    ASSERT_TRUE(device().eventually([] { return savedNetworks().size() == 2; }));
    device().clearHistory();
    manager().forgetNetwork(wpa2Network.ssid);
    EXPECT_TRUE(device().eventually([] { return savedNetworks().size() == 1 && savedNetwork("Kaz Open"); }));
    EXPECT_TRUE(device().reaches(Status::connected, openNetwork.ssid));
    EXPECT_FALSE(device().history().size() > 1) << "the connection was disturbed";
}

TEST_F(Forgetting, AForgottenNetworkWithTwoConfigurationsLosesBoth) {
    for (int i = 0; i < 2; ++i) {
        run("/opt/guest/device save '\"Kaz WPA2\"' wpa-two-secret");
    }
    ASSERT_EQ(savedNetworks().size(), 2U);
    manager().forgetNetwork(wpa2Network.ssid);
    EXPECT_TRUE(device().eventually([] { return savedNetworks().empty(); }));
}

}  // namespace
}  // namespace kaz::vm
