#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;

class NetworkdTest : public DeviceTest {
  protected:
    void connect() {
        startInRangeOf({cafe});
        select(addNetwork(openNetwork("Cafe")));
        ASSERT_TRUE(becomes("online"));
    }

    bool becomes(const std::string& state) { return client_->becomes("OnlineState", state); }
};

TEST_F(NetworkdTest, GoesOnlineAfterTheLinkIsUpAndOfflineWithIt) {
    connect();
    EXPECT_EQ(client_->valuesOf("State").back(), "completed");
    call("Disconnect");
    ASSERT_TRUE(becomes("offline"));
    EXPECT_THAT(client_->valuesOf("OnlineState"), ElementsAre("online", "offline"));
}

TEST_F(NetworkdTest, GoesOfflineWhenTheSupplicantCrashes) {
    connect();
    device_->crashSupplicant();
    EXPECT_TRUE(becomes("offline"));
}

TEST_F(NetworkdTest, KeepsAStateSetByHandUntilTheLinkChanges) {
    connect();
    device_->setOnlineState("partial");
    EXPECT_TRUE(becomes("partial"));
    EXPECT_EQ(client_->get(networkdManager, "OnlineState"), "partial");
    device_->deauthenticate(1);
    EXPECT_TRUE(becomes("offline"));
}

TEST_F(NetworkdTest, ListsItsStateAmongAllProperties) {
    start();
    EXPECT_TRUE(includes(client_->getAll(networkdManager),
                         {{"OnlineState", "offline"}, {"CarrierState", "no-carrier"}}));
}

}  // namespace
}  // namespace kaz::sim::test
