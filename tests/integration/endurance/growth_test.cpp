// What is done over and over must not use more and more.
#include "device_fixture.h"
#include "resources.h"

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
    // A few messages may be under way at either time. A byte lost in each of a hundred thousand rounds, or one
    // block in each of a thousand, would be more.
    void expectNoGrowth() {
        constexpr std::size_t bytesUnderWay = 8192;
        forgetAll();
        EXPECT_EQ(openDescriptors(), descriptors_);
        EXPECT_LE(allocatedBytes(), bytes_ + bytesUnderWay);
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
    std::size_t bytes_ = 0;
};

TEST_F(Growth, IsNoneInAThousandRoundsOfAttachingAndDetaching) {
    start();
    attachAndDetach(500);
    takeStock();
    attachAndDetach(1000);
    expectNoGrowth();
}

TEST_F(Growth, IsNoneInAHundredThousandSignals) {
    start();
    storm(3);
    takeStock();
    storm(10);
    expectNoGrowth();
    ASSERT_EQ(manager().connect(settings("Home", SecurityMode::rsnPsk, homePassword)), ConnectResult::ok);
    ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
}

}  // namespace
}  // namespace kaz::test
