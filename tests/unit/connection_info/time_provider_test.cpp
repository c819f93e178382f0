#include "connection_info/time_provider.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace kaz::test {
namespace {

TEST(TimeProviderWallClock, WallClockReturnsTheSteadyClocksTime) {
    const std::shared_ptr<wifi::TimeProvider> clock = std::make_shared<wifi::TimeProviderWallClock>();
    const auto before = std::chrono::steady_clock::now();
    const auto now = clock->get();
    const auto after = std::chrono::steady_clock::now();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

}  // namespace
}  // namespace kaz::test
