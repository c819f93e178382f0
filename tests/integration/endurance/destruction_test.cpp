// Managers that end at any moment.
#include "integration/endurance/resources.h"
#include "support/device_fixture/device_fixture.h"
#include "support/waiting/waiting.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace kaz::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using wifi::ConnectResult;
using wifi::SecurityMode;
using Status = wifi::ConnectionInfo::Status;

class Destruction : public DeviceFixture {
  protected:
    static constexpr milliseconds delay{10};

    // Delays the reply to the call with this number, counted from now.
    void delayAnswer(unsigned call) {
        device().clearFaults();
        device().forgetCalls();
        fault_ = device().orderFault({.nth = call, .kind = sim::FaultKind::delay, .delay = delay});
    }

    // Waits for this number of calls. Returns a time until which the last one has no reply yet.
    steady_clock::time_point waitForCall(std::size_t count) {
        auto notYet = steady_clock::now();
        EXPECT_TRUE(device().waitForCalls(
            [&](const auto& calls) {
                if (calls.size() < count) {
                    notYet = steady_clock::now();
                }
                return calls.size() >= count;
            },
            timeLimit));
        return notYet + delay;
    }

    bool wasDelayed() { return device().timesFired(fault_) == 1; }

  private:
    sim::FaultId fault_ = 0;
};

// Its parameter is the first round.
class DestructionDuringACall : public Destruction, public testing::WithParamInterface<unsigned> {};

// The start makes eight calls and one per configured network; then the requests follow. Each round destroys the Manager
// while a different one of these calls has no reply yet.
TEST_P(DestructionDuringACall, ManagersOf250RoundsLeaveNothingOpen) {
    constexpr int rounds = 250;
    constexpr unsigned calls = 24;
    start();
    user().leave();
    std::size_t descriptors = 0;
    int inFlight = 0;
    for (unsigned round = GetParam(); round < GetParam() + rounds && !HasFailure(); ++round) {
        if (round == GetParam() + calls) {
            descriptors = openDescriptors();  // with those by which the device delays answers
        }
        const unsigned call = round % calls + 1;
        SCOPED_TRACE(call);
        delayAnswer(call);
        {
            wifi::Manager manager;
            manager.scan();
            EXPECT_EQ(manager.connect(home()), ConnectResult::ok);
            const auto unanswered = waitForCall(call);
            inFlight += steady_clock::now() < unanswered ? 1 : 0;
        }
        EXPECT_TRUE(wasDelayed());
        forgetLog();
    }
    // In some, the test itself may have been too slow to know.
    EXPECT_GT(inFlight, rounds / 2);
    EXPECT_EQ(openDescriptors(), descriptors);
}

// A thousand rounds, of which ctest runs four at a time.
INSTANTIATE_TEST_SUITE_P(FirstQuarter, DestructionDuringACall, testing::Values(0));
INSTANTIATE_TEST_SUITE_P(SecondQuarter, DestructionDuringACall, testing::Values(250));
INSTANTIATE_TEST_SUITE_P(ThirdQuarter, DestructionDuringACall, testing::Values(500));
INSTANTIATE_TEST_SUITE_P(FourthQuarter, DestructionDuringACall, testing::Values(750));

// Two networks are saved, and the device connects to a third. At any stage the user may leave. The next user finds the
// saved networks, one configuration of the third at most, and no disabled network.
class DestructionDuringAConnect : public Destruction {
  protected:
    void SetUp() override {
        start();
        connect(cafe());
        connect(old());
        ASSERT_TRUE(waitForSaved("ssid=\"Old\""));
    }

    void beginToJoinHome(const std::string& password = homePassword) {
        ASSERT_EQ(manager().connect(home(password)), ConnectResult::ok);
    }

    static wifi::ConnectionSettings old() { return settings("Old", SecurityMode::wep, "12345"); }

    static bool saves(const std::vector<sim::Call>& calls) {
        return std::any_of(calls.begin(), calls.end(),
                           [](const sim::Call& call) { return call.member == "SaveConfig"; });
    }

    // The number of calls of an undisturbed connect.
    std::size_t callsOfAConnect() {
        device().forgetCalls();
        beginToJoinHome();
        EXPECT_TRUE(device().waitForCalls(saves, timeLimit));
        EXPECT_TRUE(user().waitForStatus(Status::connected, "Home"));
        const std::size_t made = device().calls().size();
        forgetHome();
        return made;
    }

    // Leaves in the middle of an attempt, and looks at what the next user finds.
    void leaveWhen(const std::function<bool()>& stageIsReached, const std::string& password = homePassword) {
        connect(cafe());
        device().forgetCalls();
        user().forgetHistory();
        forgetLog();
        beginToJoinHome(password);
        ASSERT_TRUE(stageIsReached());
        user().leave();
        left_ = user().history().empty() ? wifi::ConnectionInfo{} : user().history().back();
        restartUser();
        expectNothingLost();
        // An attempt that begins during another one may take the other's end for its own.
        ASSERT_TRUE(user().waitForStatus(Status::connected));
        connect(old());
        connect(home());
        forgetHome();
    }

    // The last state that the user who left had seen.
    const wifi::ConnectionInfo& left() const { return left_; }

  private:
    void forgetHome() {
        manager().forgetNetwork("Home");
        ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    }

    // A user that saves what it finds in the supplicant.
    void expectNothingLost() {
        device().forgetCalls();
        manager().forgetNetwork("Old");
        ASSERT_TRUE(device().waitForCalls(saves, timeLimit));
        const std::string saved = savedConfiguration();
        EXPECT_NE(saved.find("ssid=\"Cafe\""), std::string::npos) << saved;
        EXPECT_EQ(saved.find("disabled=1"), std::string::npos) << saved;
        EXPECT_EQ(saved.find("ssid=\"Home\""), saved.rfind("ssid=\"Home\"")) << saved;
    }

    wifi::ConnectionInfo left_;
};

TEST_F(DestructionDuringAConnect, AManagerDestroyedAtAnyStageOfAConnectLosesNothing) {
    const std::size_t stages = callsOfAConnect();
    ASSERT_GT(stages, 15U);
    for (std::size_t stage = 0; stage <= stages && !HasFatalFailure(); ++stage) {
        SCOPED_TRACE(stage);
        // The number of calls that read access points varies.
        leaveWhen([&] {
            return device().waitForCalls(
                [stage](const auto& calls) { return calls.size() >= stage || saves(calls); }, timeLimit);
        });
    }
}

// A device that stays in each state long enough for the user to leave in it.
class DestructionBetweenCalls : public DestructionDuringAConnect {
  protected:
    void SetUp() override {
        neighbourhood.times.handshake = milliseconds(10'000);
        neighbourhood.times.dhcp = milliseconds(10'000);
        DestructionDuringAConnect::SetUp();
    }

    // If the test has to wait for a processor, the attempt leaves the state meanwhile. Then it tries again.
    void leaveIn(Status status, const std::function<bool()>& isReached,
                 const std::string& password = homePassword) {
        int tries = 5;
        do {
            ASSERT_GT(tries, 0);
            --tries;
            leaveWhen(isReached, password);
        } while (!HasFailure() && left().status != status);
    }

    bool waitForSupplicant(const std::string& state) {
        return log().waitForText(spdlog::level::debug, "PropertiesChanged: State=" + state);
    }
};

TEST_F(DestructionBetweenCalls, AManagerDestroyedInAnyStatusLosesNothing) {
    for (const Status status : {Status::connectingWifi, Status::connectingIP, Status::connected}) {
        SCOPED_TRACE(static_cast<int>(status));
        leaveIn(status, [&] { return user().waitToPass(status, "Home"); });
    }
}

TEST_F(DestructionBetweenCalls, AManagerDestroyedDuringLinkSetUpLosesNothing) {
    for (const char* state : {"associating", "associated", "4way_handshake"}) {
        SCOPED_TRACE(state);
        leaveIn(Status::connectingWifi, [&] { return waitForSupplicant(state); });
    }
}

TEST_F(DestructionBetweenCalls, AManagerDestroyedAroundAFailingAttemptLosesNothing) {
    const char* wrong = "wrong password";
    leaveIn(
        Status::connectingWifi, [&] { return waitForSupplicant("4way_handshake"); }, wrong);
    leaveWhen(
        [&] { return user().waitToPass([](const auto& info) { return info.disconnectSsid == "Home"; }); },
        wrong);
}

}  // namespace
}  // namespace kaz::test
