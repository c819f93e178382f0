#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;

class NetworkdTest : public DeviceTest {
  protected:
    void connect() {
        start({accessPoint("Cafe", Security::open)});
        select(addNetwork(openNetwork("Cafe")));
        ASSERT_TRUE(becomes("online"));
    }

    bool becomes(const std::string& state) {
        return client_->waitUntil([&] {
            const auto states = client_->valuesOf("OnlineState");
            return !states.empty() && states.back() == state;
        });
    }
};

TEST_F(NetworkdTest, GoesOnlineAfterTheLinkIsUpAndOfflineWithIt) {
    connect();
    EXPECT_EQ(client_->valuesOf("State").back(), "completed");
    client_->call(supplicantInterface, "Disconnect");
    ASSERT_TRUE(becomes("offline"));
    EXPECT_THAT(client_->valuesOf("OnlineState"), ElementsAre("online", "offline"));
}

TEST_F(NetworkdTest, GoesOfflineWhenTheSupplicantCrashes) {
    connect();
    device_->crashSupplicant();
    EXPECT_TRUE(becomes("offline"));
}

TEST_F(NetworkdTest, SaysWhatItIsToldUntilTheLinkChanges) {
    connect();
    device_->setOnlineState("partial");
    EXPECT_TRUE(becomes("partial"));
    EXPECT_EQ(client_->get(networkdManager, "OnlineState"), "partial");
    device_->deauthenticate(1);
    EXPECT_TRUE(becomes("offline"));
}

TEST_F(NetworkdTest, TellsItsStateAmongAllProperties) {
    start(std::vector<AccessPoint>{});
    const auto all =
        client_
            ->call({networkdManager.service, networkdManager.path, "org.freedesktop.DBus.Properties"},
                   "GetAll", "s", "org.freedesktop.network1.Manager")
            .at(0);
    EXPECT_EQ(all.at("OnlineState"), "offline");
    EXPECT_EQ(all.at("CarrierState"), "no-carrier");
}

}  // namespace
}  // namespace kaz::sim::test
