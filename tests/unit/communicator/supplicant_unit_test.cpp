// The supplicant's unit in systemd.
#include "unit/communicator/communicator_fixture.h"

namespace kaz::wifi {
namespace {

class Service : public CommunicatorTest {
  protected:
    bool turn(bool on) {
        return onLoop([&] { return communicator->startStopSupplicantSync(on); });
    }

    void answerJobs() {
        for (const char* member : {"StartUnit", "StopUnit"}) {
            onSystemd(member, reply("o", "/org/freedesktop/systemd1/job/1"));
        }
        onSystemd("ResetFailedUnit", reply(""));
    }

    // Blocks until all signals that systemd has emitted are handled.
    void settleSystemd() {
        emitUnitState(communicator->isSupplicantOn() ? "inactive" : "active");
        EXPECT_TRUE(calls.waitForCall("status changed"));
        onLoop([] {});
    }

    // These signals do nothing but log this.
    void expectIgnored(const std::vector<test::Append>& signals, test::RecordingLog::Records logged) {
        startAttached();
        for (const test::Append& signal : signals) {
            systemd.emit(unitPath, propertiesInterface, "PropertiesChanged", signal);
        }
        settleSystemd();
        EXPECT_THAT(takeCalls(), ElementsAre("status changed: off"));
        logged.push_back(debug("wpa_supplicant is stopped"));
        EXPECT_EQ(takeLog(), logged);
    }

    static std::string unitCall(const std::string& member, const std::string& mode) {
        return callText(systemdPath, systemdInterface + '.' + member, "\"wpa_supplicant.service\"" + mode);
    }
    const std::string callReset = unitCall("ResetFailedUnit", "");
    const std::string callStart = unitCall("StartUnit", ", \"replace\"");
    const std::string callStop = unitCall("StopUnit", ", \"replace\"");
};

TEST_F(Service, StartCallsResetFailedUnitThenStartUnit) {
    answerJobs();
    startDetached();
    EXPECT_TRUE(turn(true));
    EXPECT_THAT(takeCalls(), ElementsAre(callReset, callStart));
    EXPECT_THAT(takeLog(), ElementsAre(debug("Turning wpa_supplicant on.")));
    EXPECT_FALSE(communicator->isSupplicantOn()) << "the unit's signal tells that it runs";
}

TEST_F(Service, StopCallsOnlyStopUnit) {
    answerJobs();
    startAttached();
    EXPECT_TRUE(turn(false));
    EXPECT_THAT(takeCalls(), ElementsAre(callStop));
    EXPECT_THAT(takeLog(), ElementsAre(debug("Turning wpa_supplicant off.")));
    EXPECT_TRUE(communicator->isSupplicantOn());
}

TEST_F(Service, FailedResetDoesNotPreventTheStart) {
    answerJobs();
    onSystemd("ResetFailedUnit", errorReply("org.freedesktop.systemd1.NoSuchUnit", "x"));
    startDetached();
    EXPECT_TRUE(turn(true));
    EXPECT_THAT(takeCalls(), ElementsAre(callReset, callStart));
}

TEST_F(Service, StartRefusedBySystemdReturnsFalse) {
    answerJobs();
    for (const char* member : {"StartUnit", "StopUnit"}) {
        onSystemd(member, errorReply("org.freedesktop.DBus.Error.InteractiveAuthorizationRequired", "x"));
    }
    startDetached();
    EXPECT_FALSE(turn(true));
    EXPECT_FALSE(turn(false));
}

TEST_F(Service, ReplyWithoutJobIsSuccess) {
    onSystemd("StopUnit", reply("i", 1));
    startDetached();
    EXPECT_TRUE(turn(false));
    EXPECT_THAT(log.texts(spdlog::level::warn), IsEmpty());
}

TEST_F(Service, FailedLoadUnitReadsTheStateOfTheRootPath) {
    onSystemd("LoadUnit", errorReply("org.freedesktop.systemd1.LoadFailed", "x"));
    start("active");
    EXPECT_THAT(calls.calls(),
                ElementsAre(callLoadUnit, callSubscribe, getText("/", unitInterface, "ActiveState")));
    EXPECT_THAT(log.texts(spdlog::level::debug),
                ElementsAre("Dbus path of wpa_supplicant within systemd daemon is /"));
    EXPECT_FALSE(communicator->isSupplicantOn());
}

TEST_F(Service, UndecodableUnitPathReadsTheStateOfTheRootPath) {
    onSystemd("LoadUnit", reply("s", "/unit"));
    start("active");
    EXPECT_THAT(calls.calls(),
                ElementsAre(callLoadUnit, callSubscribe, getText("/", unitInterface, "ActiveState")));
    EXPECT_EQ(log.records().at(0), warning(decodingFailed + "No such device or address"));
    EXPECT_EQ(log.records().at(1), debug("Dbus path of wpa_supplicant within systemd daemon is /"));
}

class ServiceThatTheStartMissed : public Service, public testing::WithParamInterface<const char*> {
  protected:
    // Starts while the call that the parameter names fails, then lets it succeed.
    void startInVain() {
        answerJobs();
        const Answer loaded = reply("o", unitPath);
        const Answer refusal = errorReply("org.freedesktop.DBus.Error.NoReply", "x");
        const bool loads = std::string(GetParam()) != "LoadUnit";
        onSystemd("LoadUnit", loads ? loaded : refusal);
        onUnitState(refusal);
        startLoop();
        onSystemd("LoadUnit", loaded);
        onUnitState(reply("v", "s", "active"));
    }

    void startLoop() {
        communicator->startEventLoop();
        onLoop([] {});
        EXPECT_FALSE(communicator->isSupplicantOn());
        forget();
    }
};

TEST_P(ServiceThatTheStartMissed, UnitNotFoundBeforeIsFoundByTheNextStart) {
    startInVain();
    EXPECT_TRUE(turn(true));
    EXPECT_TRUE(communicator->isSupplicantOn());
    const auto made = takeCalls();
    ASSERT_GE(made.size(), 5U);
    EXPECT_THAT(std::vector(made.begin(), made.begin() + 5),
                ElementsAre(callReset, callStart, callLoadUnit, callSubscribe, getUnitState));
    EXPECT_TRUE(turn(true));
    EXPECT_EQ(takeCalls().size(), 2U) << "once it is found, turning it on is all there is to do";
    emitUnitState("failed");
    EXPECT_TRUE(calls.waitForCall("status changed: off")) << "its signals are followed";
}

TEST_P(ServiceThatTheStartMissed, UnitNotFoundBeforeIsNotLoadedByAStopOrARefusedStart) {
    startInVain();
    EXPECT_TRUE(turn(false));
    EXPECT_THAT(takeCalls(), ElementsAre(callStop));
    onSystemd("StartUnit", errorReply("org.freedesktop.DBus.Error.Failed", "x"));
    EXPECT_FALSE(turn(true));
    EXPECT_THAT(takeCalls(), ElementsAre(callReset, callStart));
    EXPECT_FALSE(communicator->isSupplicantOn());
}

INSTANTIATE_TEST_SUITE_P(After, ServiceThatTheStartMissed, testing::Values("LoadUnit", "ActiveState"),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_F(Service, UnitSignalAttachesAfterAFailedSubscribe) {
    onSystemd("Subscribe", errorReply("org.freedesktop.DBus.Error.Failed", "x"));
    startDetached();
    emitUnitState("active");
    EXPECT_TRUE(calls.waitForCall("status changed: on"));
}

TEST_F(Service, UnreadableStateDoesNotAttach) {
    startDetached();
    for (const Answer& answer :
         {errorReply("org.freedesktop.DBus.Error.UnknownProperty", "x"), reply("v", "i", 1), reply("")}) {
        onUnitState(answer);
        onLoop([&] { communicator->unit().connectSync(); });
        EXPECT_FALSE(communicator->isSupplicantOn());
    }
}

TEST_F(Service, UnitSignalsAttachAndDetach) {
    startDetached();
    emitUnitState("activating");
    emitUnitState("active");
    EXPECT_TRUE(calls.waitForCall("status changed: on"));
    EXPECT_TRUE(communicator->isSupplicantOn());
    emitUnitState("deactivating");
    emitUnitState("failed");
    EXPECT_TRUE(calls.waitForCall("status changed: off"));
    EXPECT_FALSE(communicator->isSupplicantOn());
}

TEST_F(Service, UnitSignalOfAnotherInterfaceIsIgnored) {
    std::vector<test::Append> signals;
    for (const char* interface : {"org.freedesktop.systemd1.Service", "org.freedesktop.systemd1.unit",
                                  "org.freedesktop.systemd1.Unit2", ""}) {
        signals.push_back(values("sa{sv}as", interface, 1, "ActiveState", "s", "failed", 0));
        signals.push_back(values("sa{sv}as", interface, 1, "ActiveState", "i", 1, 0));
    }
    expectIgnored(signals, {});
}

TEST_F(Service, UnitSignalWithoutActiveStateChangesNothing) {
    expectIgnored({values("sa{sv}as", unitInterface, 1, "SubState", "s", "dead", 1, "ActiveState"),
                   values("sa{sv}as", unitInterface, 0, 0),
                   values("sa{sv}as", unitInterface, 1, "ActiveState", "s", "reloading", 0)},
                  {});
}

TEST_F(Service, UndecodableUnitSignalIsLoggedAndDropped) {
    const LogRecord undecodable = warning(decodingFailed + noSuchType);
    expectIgnored({values("i", 1), values(""), values("s", unitInterface),
                   values("sa{sv}as", unitInterface, 1, "ActiveState", "i", 1, 0)},
                  {undecodable, undecodable, undecodable, warning(decodingFailed + noSuchValue)});
}

}  // namespace
}  // namespace kaz::wifi
