// Repeated work must not use more and more memory or file descriptors.
#include "integration/endurance/resources.h"
#include "support/device_fixture/device_fixture.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace kaz::test {
namespace {

using wifi::ConnectResult;
using wifi::SecurityMode;
using Status = wifi::ConnectionInfo::Status;

class Growth : public DeviceFixture {
  protected:
    // Drops the data that only the test keeps.
    void forgetAll() {
        device().forgetCalls();
        user().forgetHistory();
        forgetLog();
    }

    // Runs `work` and compares the memory in use after it with that before. The bounds allow for a few messages in
    // flight. A leak of one byte in each of a hundred thousand rounds, or of one block in each of a thousand, is more.
    // A queue keeps the memory of its greatest length, which depends on how busy the machine is. So memory may grow
    // once, but a leak repeats each time. Resident memory includes memory that no allocator counts, in whole pages.
    void expectNoGrowth(const std::function<void()>& work) {
        constexpr std::size_t bytesUnderWay = 8192;
        constexpr std::size_t residentUnderWay = std::size_t{1024} * 1024;
        constexpr int times = 4;
        std::vector<std::size_t> grown;
        std::vector<std::size_t> residentGrown;
        forgetAll();
        while (grown.size() < times &&
               (grown.empty() || grown.back() > bytesUnderWay || residentGrown.back() > residentUnderWay)) {
            const std::size_t descriptors = openDescriptors();
            const std::size_t bytes = allocatedBytes();
            const std::size_t resident = residentBytes();
            work();
            ASSERT_FALSE(HasFatalFailure());
            forgetAll();
            ASSERT_EQ(openDescriptors(), descriptors);
            grown.push_back(allocatedBytes() - std::min(bytes, allocatedBytes()));
            residentGrown.push_back(residentBytes() - std::min(resident, residentBytes()));
        }
        EXPECT_LE(grown.back(), bytesUnderWay) << "each time: " << testing::PrintToString(grown);
        EXPECT_LE(residentGrown.back(), residentUnderWay)
            << "each time: " << testing::PrintToString(residentGrown);
    }

    void attachAndDetach(int rounds) {
        for (int round = 0; round < rounds && !HasFatalFailure(); ++round) {
            device().setUnitState("inactive", "dead");
            ASSERT_TRUE(user().waitForStack(false));
            device().setUnitState("active", "running");
            ASSERT_TRUE(user().waitForStack(true));
            if (round % 50 == 0) {
                forgetAll();
            }
        }
    }

    std::size_t statesHandled() const {
        const auto texts = log().texts(spdlog::level::debug);
        return static_cast<std::size_t>(std::count_if(
            texts.begin(), texts.end(),
            [](const std::string& text) { return text.starts_with("PropertiesChanged: State="); }));
    }

    // Storms in pieces, each followed by a marker that shows that the piece was handled.
    void storm(int pieces) {
        constexpr unsigned signalsOfAPiece = 10'000;
        for (int piece = 0; piece < pieces && !HasFatalFailure(); ++piece) {
            device().storm(signalsOfAPiece);
            const int before = user().scanningCallbacks();
            manager().scan();
            ASSERT_TRUE(user().waitUntil(
                [&] { return user().scanningCallbacks() >= before + 2 && !manager().isScanning(); }));
            ASSERT_GE(statesHandled(), signalsOfAPiece);
            forgetAll();
        }
    }
};

TEST_F(Growth, AThousandRoundsOfAttachingAndDetachingLeakNothing) {
    start();
    attachAndDetach(500);
    expectNoGrowth([&] { attachAndDetach(1000); });
}

TEST_F(Growth, AHundredThousandSignalsLeakNothing) {
    start();
    storm(3);
    expectNoGrowth([&] { storm(10); });
    ASSERT_NO_FATAL_FAILURE(connect(home()));
}

}  // namespace
}  // namespace kaz::test
