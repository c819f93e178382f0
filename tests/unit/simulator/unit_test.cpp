#include "device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;

class UnitTest : public DeviceTest {
  protected:
    void startUnit() {
        client_->call(systemdManager, "StartUnit", "ss", "wpa_supplicant.service", "replace");
    }
    void stopUnit() { client_->call(systemdManager, "StopUnit", "ss", "wpa_supplicant.service", "replace"); }
    // As the unit's signals tell.
    bool becomes(const std::string& state) {
        return client_->waitUntil([&] {
            const auto states = client_->valuesOf("ActiveState");
            return !states.empty() && states.back() == state;
        });
    }
};

TEST_F(UnitTest, StopsAndStartsTheSupplicantThroughItsTransitionalStates) {
    start({accessPoint("Cafe", Security::open)});
    client_->call(systemdManager, "Subscribe");
    const std::string before = client_->ownerOf("fi.w1.wpa_supplicant1");
    stopUnit();
    ASSERT_TRUE(becomes("inactive"));
    EXPECT_EQ(client_->ownerOf("fi.w1.wpa_supplicant1"), "");
    startUnit();
    ASSERT_TRUE(becomes("active"));
    EXPECT_NE(client_->ownerOf("fi.w1.wpa_supplicant1"), "");
    EXPECT_NE(client_->ownerOf("fi.w1.wpa_supplicant1"), before);
    EXPECT_THAT(client_->valuesOf("ActiveState"),
                ElementsAre("deactivating", "inactive", "activating", "active"));
}

TEST_F(UnitTest, FailsWhenTheSupplicantCrashes) {
    start({accessPoint("Cafe", Security::open)});
    device_->crashSupplicant();
    EXPECT_EQ(client_->get(systemdUnit, "ActiveState"), "failed");
    EXPECT_EQ(client_->ownerOf("fi.w1.wpa_supplicant1"), "");
}

}  // namespace
}  // namespace kaz::sim::test
