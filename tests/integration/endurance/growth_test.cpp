// What is done over and over must not use more and more.
#include "device_fixture.h"
#include "resources.h"

#include <algorithm>

namespace kaz::test {
namespace {

using wifi::ConnectResult;
using wifi::SecurityMode;
using Status = wifi::ConnectionInfo::Status;

class Growth : public DeviceFixture {
  protected:
    // Forgets what only the test remembers.
    void forgetAll() {
        device().forgetCalls();
        user().forgetHistory();
        forgetLog();
    }

    // Remembers what is in use now, and compares.
    void takeStock() {
        forgetAll();
        descriptors_ = openDescriptors();
        bytes_ = allocatedBytes();
    }
    // Allocators keep some of what was freed, and vectors their capacity, so memory settles only slowly. A leak of one
    // message each time would be more than this.
    void expectNoGrowth(std::size_t times) {
        constexpr std::size_t bytesOfATinyRecord = 4;
        constexpr std::size_t settling = 150'000;
        forgetAll();
        EXPECT_EQ(openDescriptors(), descriptors_);
        if (bytes_) {
            EXPECT_LE(allocatedBytes(), *bytes_ + std::max(times * bytesOfATinyRecord, settling));
        }
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

    // Storms in pieces, each followed by a sign that it was seen to its end.
    void storm(int pieces) {
        constexpr unsigned signalsOfAPiece = 10'000;
        for (int piece = 0; piece < pieces && !HasFatalFailure(); ++piece) {
            device().storm(signalsOfAPiece);
            const int before = user().scanningCallbacks();
            manager().scan();
            ASSERT_TRUE(user().waitUntil(
                [&] { return user().scanningCallbacks() >= before + 2 && !manager().isScanning(); }));
            forgetAll();
        }
    }

  private:
    std::size_t descriptors_ = 0;
    std::optional<std::size_t> bytes_;
};

TEST_F(Growth, IsNoneInAThousandRoundsOfAttachingAndDetaching) {
    start();
    attachAndDetach(500);
    takeStock();
    attachAndDetach(1000);
    expectNoGrowth(1000);
}

TEST_F(Growth, IsNoneInAHundredThousandSignals) {
    start();
    storm(3);
    takeStock();
    storm(10);
    expectNoGrowth(100'000);
    ASSERT_EQ(manager().connect(settings("Home", SecurityMode::rsnPsk, homePassword)), ConnectResult::ok);
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
}

}  // namespace
}  // namespace kaz::test
