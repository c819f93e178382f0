// The supplicant's interfaces come and go while it runs.
#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

class Interfaces : public DeviceTest {
  protected:
    json list() { return client_->get(supplicantRoot, "Interfaces"); }

    template <typename... Arguments>
    json order(const char* member, const char* types = "", Arguments... arguments) {
        return client_->call(simulatorControl, member, types, arguments...);
    }

    const std::string first_ = supplicantInterface.path;
    const std::string second_ = "/fi/w1/wpa_supplicant1/Interfaces/1";
};

TEST_F(Interfaces, TheOneOfTheRadioIsRemovedAndMadeAgainUnderAnotherPath) {
    start();
    const std::string network = addNetwork(openNetwork("Cafe"));
    order("RemoveInterface");
    ASSERT_TRUE(client_->waitForSignalOf("NetworkRemoved", network));
    ASSERT_TRUE(client_->waitForSignalOf("InterfaceRemoved", first_));
    EXPECT_EQ(list(), json::array());
    EXPECT_NE(errorOf(supplicantInterface, "SaveConfig"), "");
    EXPECT_EQ(errorOf(supplicantRoot, "GetInterface", "s", "wlan0"),
              "fi.w1.wpa_supplicant1.InterfaceUnknown");

    order("AddInterface");
    ASSERT_TRUE(client_->waitForSignalOf("InterfaceAdded", second_));
    EXPECT_EQ(list(), json({second_}));
    EXPECT_EQ(client_->call(supplicantRoot, "GetInterface", "s", "wlan0").at(0), second_);
    EXPECT_EQ(client_->get(systemdUnit, "ActiveState"), "active");
}

TEST_F(Interfaces, ANewOneConnectsToTheSavedNetworks) {
    start({.neighbourhood = {.accessPoints = {cafe},
                             .configuredNetworks = {{{"ssid", "Cafe"}, {"key_mgmt", "NONE"}}}}});
    ASSERT_TRUE(reaches("completed"));
    device_->removeInterface();
    EXPECT_EQ(device_->supplicantState(), "");
    EXPECT_EQ(device_->onlineState(), "offline");
    device_->addInterface();
    EXPECT_TRUE(changes({{"State", "completed"}}, second_));
}

TEST_F(Interfaces, ADaemonStartsWithoutOneIfConfigured) {
    start({.neighbourhood = {.interface = false}});
    EXPECT_EQ(client_->get(systemdUnit, "ActiveState"), "active");
    EXPECT_EQ(list(), json::array());
    device_->addInterface();
    ASSERT_TRUE(client_->waitForSignalOf("InterfaceAdded", first_));
    EXPECT_EQ(list(), json({first_}));
    device_->addInterface();
    EXPECT_EQ(list(), json({first_})) << "there is one radio";
}

TEST_F(Interfaces, TheNewestIsListedFirst) {
    start();
    order("AddOtherInterface");
    ASSERT_TRUE(client_->waitForSignalOf("InterfaceAdded", second_));
    EXPECT_EQ(list(), json({second_, first_}));
    order("RemoveOtherInterface");
    ASSERT_TRUE(client_->waitForSignalOf("InterfaceRemoved", second_));
    EXPECT_EQ(list(), json({first_}));
    order("RemoveOtherInterface");
    EXPECT_EQ(list(), json({first_})) << "the radio's is no other";
}

TEST_F(Interfaces, AreAllRemovedWhenTheDaemonEnds) {
    start();
    device_->addOtherInterface();
    device_->restartSupplicant();
    EXPECT_TRUE(client_->waitForSignalOf("InterfaceRemoved", second_));
    EXPECT_TRUE(client_->waitForSignalOf("InterfaceRemoved", first_));
    EXPECT_TRUE(client_->waitForSignalOf("InterfaceAdded", first_));
    EXPECT_EQ(list(), json({first_}));
}

TEST_F(Interfaces, AnotherClientSelectsANetworkOfTheRadio) {
    startInRangeOf({cafe});
    const std::string other = addNetwork(openNetwork("Other"));
    const std::string network = addNetwork(openNetwork("Cafe"));
    client_->set(networkAt(other), "Enabled", "b", 1);
    order("SelectNetwork", "s", "Cafe");
    ASSERT_TRUE(client_->waitForSignalOf("NetworkSelected", network));
    EXPECT_TRUE(reaches("completed"));
    EXPECT_EQ(client_->get(networkAt(other), "Enabled"), false);
    EXPECT_EQ(errorOf(simulatorControl, "SelectNetwork", "s", "Nowhere"),
              "com.kazwifi.Simulator1.UnknownNetwork");
    device_->removeInterface();
    EXPECT_FALSE(device_->selectNetwork("Cafe"));
}

}  // namespace
}  // namespace kaz::sim::test
