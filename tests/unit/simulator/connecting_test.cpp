#include "device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;

class Connecting : public DeviceTest {};

Settings wpa2(const std::string& ssid, const std::string& psk) {
    return {{"ssid", ssid}, {"key_mgmt", "WPA-PSK"}, {"psk", psk}, {"ieee80211w", std::int64_t{1}}};
}

TEST_F(Connecting, PassesEveryStateInOrder) {
    start({accessPoint("Home", Security::wpa2, "correct horse")});
    select(addNetwork(wpa2("Home", "correct horse")));
    ASSERT_TRUE(client_->waitUntil([&] {
        const auto states = client_->valuesOf("State");
        return !states.empty() && states.back() == "completed";
    }));
    EXPECT_THAT(client_->valuesOf("State"),
                ElementsAre("inactive", "scanning", "authenticating", "associating", "associated",
                            "4way_handshake", "group_handshake", "completed"));
}

TEST_F(Connecting, GoesOnlineAfterTheLinkIsUp) {
    start({accessPoint("Home", Security::wpa2, "correct horse")});
    select(addNetwork(wpa2("Home", "correct horse")));
    ASSERT_TRUE(reaches("completed"));
    EXPECT_TRUE(client_->waitUntil([&] { return client_->get(networkdManager, "OnlineState") == "online"; }));
}

TEST_F(Connecting, EndsInDisconnectedWithReasonMinus15WhenTheKeyIsWrong) {
    start({accessPoint("Home", Security::wpa2, "correct horse")});
    select(addNetwork(wpa2("Home", "wrong horse")));
    ASSERT_TRUE(reaches("4way_handshake"));
    ASSERT_TRUE(reaches("disconnected"));
    EXPECT_EQ(client_->get(supplicantInterface, "DisconnectReason"), -15);
    EXPECT_EQ(client_->get(supplicantInterface, "CurrentNetwork"), "/");
}

}  // namespace
}  // namespace kaz::sim::test
