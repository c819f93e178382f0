#include "unit/simulator/device_fixture.h"

#include <cstdint>

namespace kaz::sim::test {
namespace {

using ::testing::Contains;
using ::testing::Field;
using ::testing::Not;

// The supplicant's own search for networks, and what stops and starts it.
class Search : public DeviceTest {
  protected:
    void startConfigured(std::int64_t priorityOfFar = 2, bool announce = false) {
        SimulatedDevice::Options options;
        options.neighbourhood.announceOwnChoice = announce;
        options.neighbourhood.accessPoints = {accessPoint("Near", Security::open),
                                              accessPoint("Far", Security::open)};
        options.neighbourhood.accessPoints.at(0).signal = -40;
        options.neighbourhood.accessPoints.at(1).signal = -80;
        options.neighbourhood.configuredNetworks = {
            {{"ssid", "Near"}, {"key_mgmt", "NONE"}, {"priority", std::int64_t{1}}},
            {{"ssid", "Far"}, {"key_mgmt", "NONE"}, {"priority", priorityOfFar}}};
        start(std::move(options));
    }

    std::string current() { return client_->get(supplicantInterface, "CurrentNetwork"); }

    const std::string near_ = supplicantInterface.path + "/Networks/0";
    const std::string far_ = supplicantInterface.path + "/Networks/1";
};

TEST_F(Search, PrefersPriorityToSignal) {
    startConfigured();
    ASSERT_TRUE(
        client_->waitUntil([&] { return client_->get(supplicantInterface, "State") == "completed"; }));
    EXPECT_EQ(current(), far_);
}

TEST_F(Search, PrefersSignalAmongEqualPriorities) {
    startConfigured(1);
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(current(), near_);
}

TEST_F(Search, DoesNotAnnounceItsOwnChoiceUnlessToldTo) {
    startConfigured();
    ASSERT_TRUE(
        client_->waitUntil([&] { return client_->get(supplicantInterface, "State") == "completed"; }));
    EXPECT_THAT(client_->signals(), Not(Contains(Field(&Signal::member, "NetworkSelected"))));
}

TEST_F(Search, AnnouncesItsOwnChoiceWhenToldTo) {
    startConfigured(2, true);
    EXPECT_TRUE(client_->waitForSignal("NetworkSelected",
                                       [&](const Signal& s) { return s.arguments.at(0) == far_; }));
}

TEST_F(Search, TurnsToTheNextNetworkWhenTheCurrentOneIsDisabled) {
    startConfigured();
    ASSERT_TRUE(reaches("completed"));
    client_->call({supplicantInterface.service, far_, "org.freedesktop.DBus.Properties"}, "Set", "ssv",
                  "fi.w1.wpa_supplicant1.Network", "Enabled", "b", 0);
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(current(), near_);
}

TEST_F(Search, StopsAtDisconnectAndGoesOnAtReconnect) {
    startConfigured();
    ASSERT_TRUE(reaches("completed"));
    client_->call(supplicantInterface, "Disconnect");
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(client_->get(supplicantInterface, "DisconnectReason"), -3);
    EXPECT_EQ(errorOf(supplicantInterface, "Disconnect"), "fi.w1.wpa_supplicant1.NotConnected");
    scan();
    EXPECT_EQ(client_->get(supplicantInterface, "State"), "disconnected");
    client_->call(supplicantInterface, "Reconnect");
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Search, GoesOnAtReassociate) {
    startConfigured();
    ASSERT_TRUE(reaches("completed"));
    client_->call(supplicantInterface, "Reassociate");
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Search, BecomesInactiveWithoutAnEnabledNetwork) {
    start({accessPoint("Cafe", Security::open)});
    EXPECT_TRUE(client_->waitUntil([&] { return client_->get(supplicantInterface, "State") == "inactive"; }));
    client_->call(supplicantInterface, "Scan", "a{sv}", 1, "Type", "s", "active");
    EXPECT_TRUE(reaches("scanning"));
    EXPECT_TRUE(reaches("inactive"));
}

TEST_F(Search, StartsWhenANetworkIsEnabled) {
    start({accessPoint("Cafe", Security::open)});
    const std::string network = addNetwork(openNetwork("Cafe"));
    client_->call({supplicantInterface.service, network, "org.freedesktop.DBus.Properties"}, "Set", "ssv",
                  "fi.w1.wpa_supplicant1.Network", "Enabled", "b", 1);
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Search, TurnsToAnotherNetworkWhenTheCurrentOneIsRemoved) {
    startConfigured();
    ASSERT_TRUE(reaches("completed"));
    client_->call(supplicantInterface, "RemoveNetwork", "o", far_.c_str());
    ASSERT_TRUE(reaches("disconnected"));
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(current(), near_);
}

}  // namespace
}  // namespace kaz::sim::test
