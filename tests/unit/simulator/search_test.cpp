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
        start({.neighbourhood = {
                   .accessPoints = {{.ssid = "Near", .signal = -40}, {.ssid = "Far", .signal = -80}},
                   .configuredNetworks =
                       {{{"ssid", "Near"}, {"key_mgmt", "NONE"}, {"priority", std::int64_t{1}}},
                        {{"ssid", "Far"}, {"key_mgmt", "NONE"}, {"priority", priorityOfFar}}},
                   .announceOwnChoice = announce}});
    }

    const std::string near_ = supplicantInterface.path + "/Networks/0";
    const std::string far_ = supplicantInterface.path + "/Networks/1";
};

TEST_F(Search, PrefersPriorityToSignal) {
    startConfigured();
    ASSERT_TRUE(client_->waitUntil([&] { return get("State") == "completed"; }));
    EXPECT_EQ(get("CurrentNetwork"), far_);
}

TEST_F(Search, PrefersSignalAmongEqualPriorities) {
    startConfigured(1);
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(get("CurrentNetwork"), near_);
}

TEST_F(Search, DoesNotAnnounceItsOwnChoiceByDefault) {
    startConfigured();
    ASSERT_TRUE(client_->waitUntil([&] { return get("State") == "completed"; }));
    EXPECT_THAT(client_->signals(), Not(Contains(Field(&Signal::member, "NetworkSelected"))));
}

TEST_F(Search, AnnouncesItsOwnChoiceIfConfigured) {
    startConfigured(2, true);
    EXPECT_TRUE(client_->waitForSignalOf("NetworkSelected", far_));
}

TEST_F(Search, ConnectsToTheNextNetworkWhenTheCurrentOneIsDisabled) {
    startConfigured();
    ASSERT_TRUE(reaches("completed"));
    client_->set(networkAt(far_), "Enabled", "b", 0);
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(get("CurrentNetwork"), near_);
}

TEST_F(Search, StopsAtDisconnectAndContinuesAtReconnect) {
    startConfigured();
    ASSERT_TRUE(reaches("completed"));
    call("Disconnect");
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(get("DisconnectReason"), -3);
    EXPECT_EQ(errorOf(supplicantInterface, "Disconnect"), "fi.w1.wpa_supplicant1.NotConnected");
    scan();
    EXPECT_EQ(get("State"), "disconnected");
    call("Reconnect");
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Search, ConnectsAgainAtReassociate) {
    startConfigured();
    ASSERT_TRUE(reaches("completed"));
    call("Reassociate");
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Search, BecomesInactiveWithoutAnEnabledNetwork) {
    startInRangeOf({cafe});
    EXPECT_TRUE(client_->waitUntil([&] { return get("State") == "inactive"; }));
    call("Scan", "a{sv}", 1, "Type", "s", "active");
    EXPECT_TRUE(reaches("scanning"));
    EXPECT_TRUE(reaches("inactive"));
}

TEST_F(Search, StartsWhenANetworkIsEnabled) {
    startInRangeOf({cafe});
    const std::string network = addNetwork(openNetwork("Cafe"));
    client_->set(networkAt(network), "Enabled", "b", 1);
    EXPECT_TRUE(reaches("completed"));
}

TEST_F(Search, ConnectsToAnotherNetworkWhenTheCurrentOneIsRemoved) {
    startConfigured();
    ASSERT_TRUE(reaches("completed"));
    call("RemoveNetwork", "o", far_.c_str());
    ASSERT_TRUE(reaches("disconnected"));
    ASSERT_TRUE(reaches("completed"));
    EXPECT_EQ(get("CurrentNetwork"), near_);
}

}  // namespace
}  // namespace kaz::sim::test
