#include "vm/device.h"
#include "vm/neighbourhood.h"

#include <malloc.h>

#include <filesystem>
#include <iterator>

namespace kaz::vm {
namespace {

struct Usage {
    std::size_t heap = 0;
    std::size_t descriptors = 0;
};

Usage usage() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return {mallinfo2().uordblks, static_cast<std::size_t>(std::distance(begin(all), end(all)))};
}

using Soak = DeviceTest;

TEST_F(Soak, TwoHundredConnectsOverTwoNetworksLeaveMemoryAndDescriptorsAsTheyWere) {
    constexpr int rounds = 200;
    constexpr int settled = 20;
    Usage before;
    const auto start = Clock::now();
    for (int round = 0; round < rounds; ++round) {
        const wifi::ConnectionSettings& next = round % 2 == 0 ? wpa2Network : openNetwork;
        // Alternately as a new network, which replaces the old configuration, and as a configured one.
        if (round % 4 < 2) {
            ASSERT_EQ(manager().connect(next), wifi::ConnectResult::ok);
        } else {
            manager().connectConfigured(next.ssid);
        }
        ASSERT_TRUE(device().reaches(Status::connected, next.ssid)) << "round " << round;
        ASSERT_FALSE(log().contains("No response from wpa_supplicant")) << "round " << round;
        device().clearHistory();
        log().clear();
        if (round == settled) {
            before = usage();
        }
    }
    record("seconds_for_all", Clock::now() - start);
    const Usage after = usage();
    RecordProperty("heap_growth",
                   std::to_string(static_cast<long>(after.heap) - static_cast<long>(before.heap)));
    EXPECT_LE(after.heap, before.heap + 16 * 1024);
    EXPECT_EQ(after.descriptors, before.descriptors);
}

}  // namespace
}  // namespace kaz::vm
