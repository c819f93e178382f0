// The supplicant's interfaces come and go while its unit is active.
#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

using Status = wifi::ConnectionInfo::Status;

class Interfaces : public DeviceFixture {
  protected:
    void startConnected() {
        start();
        ASSERT_NO_FATAL_FAILURE(connect(home()));
        ASSERT_TRUE(waitForSaved("priority=2"));
    }
};

TEST_F(Interfaces, AReplacedOneIsUsedInsteadOfTheOld) {
    ASSERT_NO_FATAL_FAILURE(startConnected());
    const int before = user().enabledCallbacks();
    device().removeInterface();
    ASSERT_TRUE(user().waitForStack(false));
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    ASSERT_TRUE(user().waitUntil([&] { return manager().networks().empty(); }));
    EXPECT_TRUE(manager().isEnabled());
    EXPECT_EQ(device().unitState(), "active");

    device().addInterface();
    ASSERT_TRUE(user().waitForStack(true));
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
    ASSERT_NO_FATAL_FAILURE(connect(cafe()));
    EXPECT_EQ(user().enabledCallbacks(), before + 2);
}

TEST_F(Interfaces, OneThatIsReplacedDuringAConnectEndsTheAttempt) {
    start();
    ASSERT_TRUE(device().alterAccessPoint(accessPoint("Home").bssid, [](auto& point) { point.busy = true; }));
    ASSERT_EQ(manager().connect(home()), wifi::ConnectResult::ok);
    ASSERT_TRUE(eventually([&] { return device().supplicantState() == "4way_handshake"; }));
    device().removeInterface();
    device().addInterface();
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    ASSERT_TRUE(user().waitForStack(true));
    ASSERT_NO_FATAL_FAILURE(connect(cafe()));
    EXPECT_EQ(savedConfiguration().find("disabled=1"), std::string::npos) << savedConfiguration();
}

TEST_F(Interfaces, OneThatIsAddedLaterIsUsed) {
    neighbourhood.interface = false;
    start();
    ASSERT_TRUE(log().waitForText(spdlog::level::err,
                                  "wpa_supplicant has no configured interfaces, can't control wifi"));
    EXPECT_FALSE(manager().isWifiStackInitialized());
    device().addInterface();
    ASSERT_TRUE(user().waitForStack(true));
    manager().scan();
    ASSERT_TRUE(user().waitForNetwork("Home"));
    ASSERT_NO_FATAL_FAILURE(connect(home()));
}

TEST_F(Interfaces, AnotherOneThatComesAndGoesChangesNothing) {
    ASSERT_NO_FATAL_FAILURE(startConnected());
    const int before = user().enabledCallbacks();
    user().forgetHistory();
    for (int i = 0; i < 3; ++i) {
        device().addOtherInterface();
        manager().scan();
        ASSERT_TRUE(user().waitForNetwork("Cafe"));
        device().removeOtherInterface();
    }
    EXPECT_EQ(manager().connectionInfo().ssid, "Home");
    ASSERT_NO_FATAL_FAILURE(connect(cafe()));
    EXPECT_EQ(user().enabledCallbacks(), before);
}

// The newest is listed first, and a Manager takes the first one.
TEST_F(Interfaces, AManagerThatBeganWithAnotherOneUsesTheRadioOnceThatIsRemoved) {
    ASSERT_NO_FATAL_FAILURE(startConnected());
    device().addOtherInterface();
    restartUser();
    EXPECT_EQ(manager().connectionInfo().status, Status::disconnected);
    const int before = user().enabledCallbacks();
    device().removeOtherInterface();
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
    EXPECT_TRUE(manager().isWifiStackInitialized());
    EXPECT_EQ(user().enabledCallbacks(), before + 2);
}

}  // namespace
}  // namespace kaz::test
