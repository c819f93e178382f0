#include "unit/simulator/device_fixture.h"

namespace kaz::sim::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* unit = "wpa_supplicant.service";
constexpr const char* supplicantName = "fi.w1.wpa_supplicant1";

class SystemdTest : public DeviceTest {
  protected:
    void startDevice(bool subscribe = true) {
        startInRangeOf({cafe});
        if (subscribe) {
            client_->call(systemdManager, "Subscribe");
        }
    }

    // As the unit's signals report.
    bool becomes(const std::string& state) { return client_->becomes("ActiveState", state); }

    std::string activeState() { return client_->get(systemdUnit, "ActiveState"); }

    // Requests a job for the unit. Returns its path.
    std::string request(const char* operation) {
        return client_->call(systemdManager, operation, "ss", unit, "replace").at(0);
    }
};

TEST_F(SystemdTest, LoadsTheUnit) {
    startDevice();
    EXPECT_EQ(client_->call(systemdManager, "LoadUnit", "s", unit).at(0), systemdUnit.path);
    EXPECT_EQ(client_->get(systemdUnit, "Id"), unit);
    EXPECT_EQ(activeState(), "active");
    EXPECT_EQ(client_->get(systemdUnit, "SubState"), "running");
}

TEST_F(SystemdTest, StopsAndStartsTheSupplicantThroughTheTransitionalStates) {
    startDevice();
    const std::string before = client_->ownerOf(supplicantName);
    request("StopUnit");
    ASSERT_TRUE(becomes("inactive"));
    EXPECT_EQ(client_->ownerOf(supplicantName), "");
    request("StartUnit");
    ASSERT_TRUE(becomes("active"));
    EXPECT_NE(client_->ownerOf(supplicantName), "");
    EXPECT_NE(client_->ownerOf(supplicantName), before);
    EXPECT_THAT(client_->valuesOf("ActiveState"),
                ElementsAre("deactivating", "inactive", "activating", "active"));
}

TEST_F(SystemdTest, HasTheSupplicantOnTheBusWhenTheUnitIsActive) {
    startDevice();
    for (int round = 0; round < 5; ++round) {
        request("RestartUnit");
        client_->signals().clear();
        ASSERT_TRUE(becomes("active"));
        EXPECT_EQ(client_->get(supplicantRoot, "Interfaces"), json({supplicantInterface.path}));
    }
}

TEST_F(SystemdTest, FailsWhenTheSupplicantCrashesAndIsResetByHand) {
    startDevice();
    device_->crashSupplicant();
    ASSERT_TRUE(becomes("failed"));
    EXPECT_EQ(client_->ownerOf(supplicantName), "");
    client_->call(systemdManager, "ResetFailedUnit", "s", unit);
    EXPECT_TRUE(becomes("inactive"));
    request("StartUnit");
    EXPECT_TRUE(becomes("active"));
}

TEST_F(SystemdTest, StartsTheSupplicantAgainAfterACrashIfConfigured) {
    startDevice();
    device_->setAutoRestart(true);
    device_->crashSupplicant();
    ASSERT_TRUE(becomes("active"));
    EXPECT_THAT(client_->valuesOf("SubState"), ElementsAre("auto-restart", "start", "running"));
}

TEST_F(SystemdTest, DoesNothingToStartAnActiveUnit) {
    startDevice();
    request("StartUnit");
    ASSERT_TRUE(
        client_->waitForSignal("JobRemoved", [](const Signal& s) { return s.arguments.at(3) == "done"; }));
    EXPECT_THAT(client_->valuesOf("ActiveState"), IsEmpty());
}

TEST_F(SystemdTest, StopsAUnitThatIsStillStarting) {
    start({.neighbourhood = {.times = {.unitStart = std::chrono::hours(100)}, .unitActive = false}});
    client_->call(systemdManager, "Subscribe");
    request("StartUnit");
    request("StopUnit");
    ASSERT_TRUE(becomes("inactive"));
    EXPECT_THAT(client_->valuesOf("ActiveState"), ElementsAre("activating", "deactivating", "inactive"));
    EXPECT_EQ(client_->ownerOf(supplicantName), "");
}

TEST_F(SystemdTest, SignalsTheBeginAndTheEndOfAJob) {
    startDevice();
    const std::string job = request("StopUnit");
    EXPECT_TRUE(client_->waitForSignal("JobNew", [&](const Signal& s) { return s.arguments.at(1) == job; }));
    EXPECT_TRUE(client_->waitForSignal("JobRemoved", [&](const Signal& s) {
        return s.arguments.at(1) == job && s.arguments.at(2) == unit && s.arguments.at(3) == "done";
    }));
}

TEST_F(SystemdTest, SendsNoSignalsWithoutASubscriber) {
    startDevice(false);
    device_->crashSupplicant();
    request("StartUnit");
    ASSERT_TRUE(client_->waitUntil([&] { return activeState() == "active"; }));
    EXPECT_THAT(client_->valuesOf("ActiveState"), IsEmpty());
}

TEST_F(SystemdTest, SignalsTheServiceInterfaceBeforeTheUnitInterface) {
    startDevice();
    device_->crashSupplicant();
    ASSERT_TRUE(becomes("failed"));
    std::vector<std::string> interfaces;
    for (const Signal& signal : client_->signals()) {
        if (signal.path == systemdUnit.path) {
            interfaces.push_back(signal.arguments.at(0));
        }
    }
    EXPECT_THAT(interfaces, ElementsAre("org.freedesktop.systemd1.Service", "org.freedesktop.systemd1.Unit"));
}

TEST_F(SystemdTest, SetsAForcedStateWithoutTouchingTheProcess) {
    startDevice();
    device_->setUnitState("reloading", "reload");
    ASSERT_TRUE(becomes("reloading"));
    EXPECT_NE(client_->ownerOf(supplicantName), "");
    EXPECT_EQ(device_->unitState(), "reloading");
}

TEST_F(SystemdTest, RefusesWhatSystemdRefuses) {
    startDevice();
    EXPECT_EQ(errorOf(systemdManager, "StartUnit", "ss", "hostapd.service", "replace"),
              "org.freedesktop.systemd1.NoSuchUnit");
    EXPECT_EQ(errorOf(systemdManager, "StopUnit", "ss", unit, "gently"),
              "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(errorOf(systemdManager, "Subscribe"), "org.freedesktop.systemd1.AlreadySubscribed");
}

TEST_F(SystemdTest, BeginsWithAnInactiveUnitIfConfigured) {
    start({.neighbourhood = {.unitActive = false}});
    EXPECT_EQ(activeState(), "inactive");
    EXPECT_EQ(client_->ownerOf(supplicantName), "");
    EXPECT_EQ(device_->supplicantState(), "");
}

TEST_F(SystemdTest, SignalsRemovalsWhenTheSupplicantIsStopped) {
    startDevice();
    const std::string network = addNetwork(openNetwork("Cafe"));
    request("StopUnit");
    EXPECT_TRUE(client_->waitForSignalOf("NetworkRemoved", network));
    EXPECT_TRUE(client_->waitForSignal("InterfaceRemoved"));
}

}  // namespace
}  // namespace kaz::sim::test
