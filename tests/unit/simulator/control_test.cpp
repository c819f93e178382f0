#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

class ControlTest : public DeviceTest {
  protected:
    template <typename... Arguments>
    json order(const char* member, const char* types = "", Arguments... arguments) {
        return client_->call(simulatorControl, member, types, arguments...);
    }
};

TEST_F(ControlTest, AddsAltersAndRemovesAccessPoints) {
    start();
    const std::string bssid = order("AddAccessPoint", "s", R"({"ssid": "Van", "security": "open"})").at(0);
    const auto paths = scan();
    ASSERT_EQ(paths.size(), 1U);
    order("AlterAccessPoint", "ss", bssid.c_str(), R"({"security": "wep"})");
    order("SetSignal", "sn", bssid.c_str(), -33);
    scan();
    EXPECT_EQ(client_->get(bssAt(paths.at(0)), "Privacy"), true);
    EXPECT_EQ(client_->get(bssAt(paths.at(0)), "Signal"), -33);
    order("RemoveAccessPoint", "s", bssid.c_str());
    scan();
    EXPECT_EQ(scan().size(), 0U);
}

TEST_F(ControlTest, RefusesUnknownAccessPointsAndInvalidJson) {
    start();
    const char* const unknown = "com.kazwifi.Simulator1.UnknownAccessPoint";
    EXPECT_EQ(errorOf(simulatorControl, "RemoveAccessPoint", "s", "02:00:00:00:00:01"), unknown);
    EXPECT_EQ(errorOf(simulatorControl, "SetSignal", "sn", "02:00:00:00:00:01", -1), unknown);
    EXPECT_EQ(errorOf(simulatorControl, "AlterAccessPoint", "ss", "02:00:00:00:00:01", "{}"), unknown);
    EXPECT_NE(errorOf(simulatorControl, "AddAccessPoint", "s", "{"), "");
    EXPECT_NE(errorOf(simulatorControl, "AddAccessPoint", "s", R"({"sid": "Van"})"), "");
    EXPECT_NE(errorOf(simulatorControl, "OrderFault", "s", R"({"kind": "smoke"})"), "");
    EXPECT_NE(errorOf(simulatorControl, "OrderFault", "s", R"({"knid": "error"})"), "");
}

TEST_F(ControlTest, RefusesASecondAccessPointWithTheSameBssid) {
    start();
    const char* const van = R"({"ssid": "Van", "bssid": "02:00:00:00:00:07"})";
    order("AddAccessPoint", "s", van);
    EXPECT_NE(errorOf(simulatorControl, "AddAccessPoint", "s", van), "");
    EXPECT_EQ(scan().size(), 1U);
}

TEST_F(ControlTest, BreaksConnections) {
    ASSERT_NO_FATAL_FAILURE(startConnected());
    order("Deauthenticate", "i", 6);
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(get("DisconnectReason"), 6);
    ASSERT_TRUE(reaches("completed"));
    order("DropLink");
    EXPECT_TRUE(reaches("disconnected"));
}

TEST_F(ControlTest, ControlsTheServices) {
    startInRangeOf({cafe});
    order("SetOnlineState", "s", "online");
    EXPECT_EQ(client_->get(networkdManager, "OnlineState"), "online");
    order("SetUnitState", "ss", "reloading", "reload");
    EXPECT_EQ(client_->get(systemdUnit, "ActiveState"), "reloading");
    order("CrashSupplicant");
    EXPECT_EQ(client_->get(systemdUnit, "ActiveState"), "failed");
    order("SetAutoRestart", "b", 1);
    order("RestartSupplicant");
    ASSERT_TRUE(client_->waitUntil([&] { return client_->get(systemdUnit, "ActiveState") == "active"; }));
    order("CrashSupplicant");
    EXPECT_TRUE(client_->waitUntil([&] { return client_->get(systemdUnit, "ActiveState") == "active"; }));
    client_->signals().clear();
    order("Storm", "u", 20U);
    EXPECT_TRUE(client_->waitUntil([&] { return client_->valuesOf("State").size() >= 20; }));
}

TEST_F(ControlTest, OrdersFaultsAndCountsThem) {
    start();
    const unsigned id = order("OrderFault", "s",
                              R"({"peer": "supplicant", "member": "SaveConfig", "nth": 2, "kind": "error",
                                  "error_name": "com.example.Full", "error_text": "disk full"})")
                            .at(0);
    EXPECT_EQ(errorOf(supplicantInterface, "SaveConfig"), "");
    EXPECT_EQ(order("TimesFired", "u", id).at(0), 0);
    EXPECT_EQ(errorOf(supplicantInterface, "SaveConfig"), "com.example.Full");
    EXPECT_EQ(order("TimesFired", "u", id).at(0), 1);
    order("ClearFaults");
}

TEST_F(ControlTest, ListsTheCallsOfTheServicesButNotItsOwn) {
    start();
    order("ForgetCalls");
    requestScan();
    const auto calls = json::parse(order("Calls").at(0).get<std::string>());
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls.at(0).at("member"), "Scan");
    EXPECT_EQ(calls.at(0).at("arguments"), json::parse(R"([{"Type": "passive"}])"));
}

}  // namespace
}  // namespace kaz::sim::test
