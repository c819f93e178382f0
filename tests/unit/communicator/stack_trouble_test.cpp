// Why no supplicant is attached, and why a call failed.
#include "unit/communicator/communicator_fixture.h"

#include "communicator/call_failure.h"

#include <utility>
#include <vector>

namespace kaz::wifi {
namespace {

using Place = StackTrouble::Place;

const std::string denied = "org.freedesktop.DBus.Error.AccessDenied";

TEST(CallFailure, FollowsFromTheNameOfTheError) {
    const std::vector<std::pair<std::string, FailureReason>> table{
        {"", FailureReason::unknown},
        {"org.freedesktop.DBus.Error.Disconnected", FailureReason::noBus},
        {"System.Error.ENOTCONN", FailureReason::noBus},
        {"System.Error.ECONNRESET", FailureReason::noBus},
        {"org.freedesktop.DBus.Error.ServiceUnknown", FailureReason::notOnBus},
        {"org.freedesktop.DBus.Error.NameHasNoOwner", FailureReason::notOnBus},
        {denied, FailureReason::denied},
        {"org.freedesktop.DBus.Error.AuthFailed", FailureReason::denied},
        {"org.freedesktop.DBus.Error.InteractiveAuthorizationRequired", FailureReason::denied},
        {"System.Error.EACCES", FailureReason::denied},
        {"System.Error.EPERM", FailureReason::denied},
        {"org.freedesktop.DBus.Error.NoReply", FailureReason::noAnswer},
        {"org.freedesktop.DBus.Error.Timeout", FailureReason::noAnswer},
        {"org.freedesktop.DBus.Error.TimedOut", FailureReason::noAnswer},
        {"System.Error.ETIMEDOUT", FailureReason::noAnswer},
        {"org.freedesktop.systemd1.NoSuchUnit", FailureReason::unitMissing},
        {"org.freedesktop.systemd1.UnitMasked", FailureReason::unitMasked},
        {"org.freedesktop.systemd1.LoadFailed", FailureReason::refused},
        {"fi.w1.wpa_supplicant1.UnknownError", FailureReason::refused},
    };
    for (const auto& [error, reason] : table) {
        EXPECT_EQ(failureReasonOf(error), reason) << error;
    }
}

class Trouble : public CommunicatorTest {
  protected:
    StackTrouble trouble() {
        return onLoop([this] { return communicator->stackTrouble(); });
    }
    FailureReason lastFailure() {
        return onLoop([this] { return communicator->lastFailure(); });
    }
};

TEST_F(Trouble, NoneWhileTheSupplicantRunsOrItsUnitIsNotActive) {
    startAttached();
    EXPECT_EQ(trouble(), StackTrouble{});
    emitUnitState("inactive");
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    EXPECT_EQ(trouble(), StackTrouble{});
}

TEST_F(Trouble, IsTheBusUntilItComesBack) {
    startDetached();
    systemd.leave();
    supplicant.leave();
    networkd.leave();
    bus.kill();
    ASSERT_TRUE(log.waitForText(spdlog::level::err, "Lost the connection to the system bus"));
    EXPECT_EQ(trouble(), (StackTrouble{Place::bus, FailureReason::noBus}));
    EXPECT_FALSE(onLoop([this] { return communicator->startStopSupplicantSync(false); }));
    EXPECT_EQ(lastFailure(), FailureReason::noBus);
    bus.restart();
    supplicant.comeBack();
    networkd.comeBack();
    onUnitState(reply("v", "s", "active"));
    systemd.comeBack();
    ASSERT_TRUE(calls.waitForCall("status changed: on"));
    EXPECT_EQ(trouble(), StackTrouble{});
}

TEST_F(Trouble, IsSystemdUntilItTellsTheStateOfTheUnit) {
    onSystemd("LoadUnit", errorReply("org.freedesktop.systemd1.NoSuchUnit", "x"));
    start("active");
    EXPECT_EQ(trouble(), (StackTrouble{Place::systemd, FailureReason::unitMissing}));
    onSystemd("LoadUnit", reply("o", unitPath));
    onUnitState(errorReply(denied, "x"));
    onLoop([this] { communicator->unit().connectSync(); });
    EXPECT_EQ(trouble(), (StackTrouble{Place::systemd, FailureReason::denied}));
    emitUnitState("active");
    ASSERT_TRUE(calls.waitForCall("status changed: on"));
    EXPECT_EQ(trouble(), StackTrouble{});
}

TEST_F(Trouble, IsTheSupplicantThatDoesNotListItsInterfaces) {
    onInterfaces(errorReply(denied, "x"));
    start("active");
    EXPECT_EQ(trouble(), (StackTrouble{Place::supplicant, FailureReason::denied}));
    emitUnitState("failed");
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    EXPECT_EQ(trouble(), StackTrouble{});
}

TEST_F(Trouble, IsAMissingInterfaceUntilItComes) {
    onInterfaces(reply("v", "ao", 0));
    start("active");
    EXPECT_EQ(trouble(), (StackTrouble{Place::interface, FailureReason::none}));
    onInterfaces(reply("v", "ao", 1, interfacePath.c_str()));
    supplicant.emit(rootPath, rootInterface, "InterfaceAdded", values("oa{sv}", interfacePath, 0));
    ASSERT_TRUE(calls.waitForCall("status changed: on"));
    EXPECT_EQ(trouble(), StackTrouble{});
}

TEST_F(Trouble, FailureOfACallIsKnownUntilItIsForgotten) {
    startAttached();
    EXPECT_EQ(lastFailure(), FailureReason::none);
    onInterface("Scan", errorReply("fi.w1.wpa_supplicant1.Interface.ScanError", "busy"));
    EXPECT_FALSE(onLoop([this] { return communicator->scanSync(); }));
    EXPECT_EQ(lastFailure(), FailureReason::refused);
    onLoop([this] { communicator->forgetFailures(); });
    EXPECT_EQ(lastFailure(), FailureReason::none);
    onSystemd("StopUnit", errorReply("org.freedesktop.systemd1.UnitMasked", "x"));
    EXPECT_FALSE(onLoop([this] { return communicator->startStopSupplicantSync(false); }));
    EXPECT_EQ(lastFailure(), FailureReason::unitMasked);
}

}  // namespace
}  // namespace kaz::wifi
