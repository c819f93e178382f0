// Managers that end at any moment.
#include "device_fixture.h"
#include "resources.h"

#include <algorithm>

namespace kaz::test {
namespace {

using wifi::ConnectResult;
using wifi::SecurityMode;
using Status = wifi::ConnectionInfo::Status;

class Destruction : public DeviceFixture {
  protected:
    void waitForCallCount(std::size_t count) {
        ASSERT_TRUE(device().waitForCalls([count](const auto& calls) { return calls.size() >= count; },
                                          WifiUser::generousLimit));
    }
};

// The start makes eight calls before it is over; each round ends in the middle of another of them.
TEST_F(Destruction, OfAThousandManagersWithCallsInFlight) {
    constexpr int rounds = 1000;
    constexpr std::size_t callsOfTheStart = 8;
    start();
    user().leave();
    const std::size_t descriptors = openDescriptors();
    for (std::size_t round = 0; round < rounds && !HasFatalFailure(); ++round) {
        device().forgetCalls();
        wifi::Manager manager;
        manager.scan();
        EXPECT_EQ(manager.connect(settings("Home", SecurityMode::rsnPsk, homePassword)), ConnectResult::ok);
        waitForCallCount(round % (callsOfTheStart + 1));
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    forgetLog();
}

// Whenever the user leaves, the next one finds a device that works, with one configuration of the network at most.
TEST_F(Destruction, DuringEveryStageOfAConnect) {
    constexpr std::size_t stages = 14;
    start();
    for (std::size_t stage = 0; stage <= stages; ++stage) {
        SCOPED_TRACE(stage);
        device().forgetCalls();
        ASSERT_EQ(manager().connect(settings("Home", SecurityMode::rsnPsk, homePassword)), ConnectResult::ok);
        waitForCallCount(stage);
        restartUser();
        ASSERT_EQ(manager().connect(settings("Cafe", SecurityMode::none)), ConnectResult::ok);
        ASSERT_TRUE(user().waitForStatus(Status::connected, "Cafe"));
        ASSERT_EQ(manager().connect(settings("Home", SecurityMode::rsnPsk, homePassword)), ConnectResult::ok);
        ASSERT_TRUE(user().waitForStatus(Status::connected, "Home"));
        ASSERT_TRUE(waitForSaved("ssid=\"Home\""));
        const std::string saved = savedConfiguration();
        EXPECT_EQ(saved.find("ssid=\"Home\""), saved.rfind("ssid=\"Home\"")) << saved;
        manager().forgetNetwork("Home");
        ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    }
}

}  // namespace
}  // namespace kaz::test
