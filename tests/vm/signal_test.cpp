#include "vm/access_point.h"
#include "vm/device.h"
#include "vm/neighbourhood.h"

namespace kaz::vm {
namespace {

using Signal = DeviceTest;

TEST_F(Signal, TheSignalFollowsThePowerOfTheRadioWithinThePollingPeriod) {
    AccessPoint accessPoint("wpa2");
    ASSERT_TRUE(device().connects(wpa2Network));
    ASSERT_EQ(manager().connectionInfo().signal, -33);
    device().clearHistory();
    const auto start = Clock::now();
    accessPoint.setPower(3);
    ASSERT_TRUE(device().passes([](const auto& info) { return info.signal == -47; }));
    const auto taken = Clock::now() - start;
    record("seconds_to_new_signal", taken);
    EXPECT_LE(taken, std::chrono::seconds(61));
    EXPECT_EQ(device().history().size(), 1U) << "nothing else changed";
    EXPECT_EQ(manager().connectionInfo().status, Status::connected);
}

}  // namespace
}  // namespace kaz::vm
