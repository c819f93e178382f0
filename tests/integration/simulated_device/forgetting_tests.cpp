#include "support/device_fixture/device_fixture.h"

namespace kaz::test {
namespace {

using Status = wifi::ConnectionInfo::Status;

class Forgetting : public DeviceFixture {
  protected:
    void connectAndSave(const wifi::ConnectionSettings& target) {
        ASSERT_NO_FATAL_FAILURE(connect(target));
        ASSERT_TRUE(waitForSaved("ssid=\"" + target.ssid + "\""));
    }

    bool waitUntilNotSaved(const std::string& ssid) {
        return log().waitFor([&](const RecordingLog::Records&) {
            return savedConfiguration().find("ssid=\"" + ssid + "\"") == std::string::npos;
        });
    }
};

TEST_F(Forgetting, ForgettingTheNetworkInUseDisconnectsAndRemovesIt) {
    start();
    ASSERT_NO_FATAL_FAILURE(connectAndSave(home()));
    manager().forgetNetwork("Home");
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    ASSERT_TRUE(waitUntilNotSaved("Home"));
    ASSERT_TRUE(user().waitUntil([&] {
        const auto home = user().network("Home");
        return home && !home->configured;
    }));
}

TEST_F(Forgetting, ForgettingASavedNetworkLeavesTheConnectionAlone) {
    start();
    ASSERT_NO_FATAL_FAILURE(connectAndSave(cafe()));
    ASSERT_NO_FATAL_FAILURE(connectAndSave(home()));
    manager().forgetNetwork("Cafe");
    ASSERT_TRUE(waitUntilNotSaved("Cafe"));
    EXPECT_EQ(manager().connectionInfo().status, Status::connected);
    EXPECT_EQ(manager().connectionInfo().ssid, "Home");
}

TEST_F(Forgetting, ForgettingRemovesEveryConfigurationOfTheNetwork) {
    const sim::Settings home{{"ssid", "Home"}, {"key_mgmt", "WPA-PSK"}, {"psk", "first of two"}};
    neighbourhood.configuredNetworks = {home, home};
    start();
    manager().forgetNetwork("Home");
    ASSERT_TRUE(log().waitForText(spdlog::level::debug, "Saved new wpa_supplicant config"));
    EXPECT_EQ(callsOf("RemoveNetwork").size(), 2U);
}

TEST_F(Forgetting, ForgettingAnUnknownNetworkLogsAnErrorAndSaves) {
    start();
    manager().forgetNetwork("Nowhere");
    ASSERT_TRUE(log().waitForText(spdlog::level::err,
                                  R"(Unable to remove network, configuration not found. ssid="Nowhere")"));
    ASSERT_TRUE(log().waitForText(spdlog::level::debug, "Saved new wpa_supplicant config"));
}

TEST_F(Forgetting, AForgottenNetworkIsSavedEvenWhenTheUserLeavesAtOnce) {
    start();
    ASSERT_NO_FATAL_FAILURE(connectAndSave(home()));
    ASSERT_NO_FATAL_FAILURE(connectAndSave(cafe()));
    manager().forgetNetwork("Home");
    ASSERT_TRUE(log().waitForText(spdlog::level::info, R"(Forgetting ssid="Home")"));
    user().leave();
    EXPECT_EQ(savedConfiguration().find("Home"), std::string::npos) << savedConfiguration();
}

}  // namespace
}  // namespace kaz::test
