// Managers that end at any moment.
#include "device_fixture.h"
#include "resources.h"

#include <algorithm>
#include <string>
#include <vector>

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

// Two networks are saved, and the device joins a third; whenever the user leaves, the next one finds all that was
// saved, with one configuration of the third network at most, and nothing disabled.
class DestructionDuringAConnect : public Destruction {
  protected:
    void SetUp() override {
        start();
        join("Cafe", SecurityMode::none);
        join("Old", SecurityMode::wep, "12345");
        ASSERT_TRUE(waitForSaved("ssid=\"Old\""));
    }

    void beginToJoinHome() {
        ASSERT_EQ(manager().connect(settings("Home", SecurityMode::rsnPsk, homePassword)), ConnectResult::ok);
    }

    void join(const std::string& ssid, SecurityMode mode, const std::string& password = {}) {
        ASSERT_EQ(manager().connect(settings(ssid, mode, password)), ConnectResult::ok);
        ASSERT_TRUE(user().waitForStatus(Status::connected, ssid));
    }

    static bool saves(const std::vector<sim::Call>& calls) {
        return std::any_of(calls.begin(), calls.end(),
                           [](const sim::Call& call) { return call.member == "SaveConfig"; });
    }

    // The calls of a connect that nobody disturbs, to the last one.
    std::size_t callsOfAConnect() {
        device().forgetCalls();
        beginToJoinHome();
        EXPECT_TRUE(device().waitForCalls(saves, WifiUser::generousLimit));
        EXPECT_TRUE(user().waitForStatus(Status::connected, "Home"));
        const std::size_t made = device().calls().size();
        forgetHome();
        return made;
    }

    void forgetHome() {
        manager().forgetNetwork("Home");
        ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    }

    // A user that saves what it finds in the supplicant.
    void expectNothingLost() {
        device().forgetCalls();
        manager().forgetNetwork("Old");
        ASSERT_TRUE(device().waitForCalls(saves, WifiUser::generousLimit));
        const std::string saved = savedConfiguration();
        EXPECT_NE(saved.find("ssid=\"Cafe\""), std::string::npos) << saved;
        EXPECT_EQ(saved.find("disabled=1"), std::string::npos) << saved;
        EXPECT_EQ(saved.find("ssid=\"Home\""), saved.rfind("ssid=\"Home\"")) << saved;
    }
};

TEST_F(DestructionDuringAConnect, LosesNothingAtAnyStage) {
    const std::size_t stages = callsOfAConnect();
    ASSERT_GT(stages, 15U);
    for (std::size_t stage = 0; stage <= stages && !HasFatalFailure(); ++stage) {
        SCOPED_TRACE(stage);
        join("Cafe", SecurityMode::none);
        device().forgetCalls();
        beginToJoinHome();
        // Not every connect asks for the access points equally often.
        ASSERT_TRUE(device().waitForCalls(
            [stage](const auto& calls) { return calls.size() >= stage || saves(calls); },
            WifiUser::generousLimit));
        restartUser();
        expectNothingLost();
        join("Old", SecurityMode::wep, "12345");
        join("Home", SecurityMode::rsnPsk, homePassword);
        forgetHome();
    }
}

}  // namespace
}  // namespace kaz::test
