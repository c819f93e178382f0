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
        start({accessPoint("Cafe", Security::open)});
        if (subscribe) {
            client_->call(systemdManager, "Subscribe");
        }
    }

    // As the unit's signals report.
    bool becomes(const std::string& state) {
        return client_->waitUntil([&] {
            const auto states = client_->valuesOf("ActiveState");
            return !states.empty() && states.back() == state;
        });
    }

    std::string activeState() { return client_->get(systemdUnit, "ActiveState"); }
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
    client_->call(systemdManager, "StopUnit", "ss", unit, "replace");
    ASSERT_TRUE(becomes("inactive"));
    EXPECT_EQ(client_->ownerOf(supplicantName), "");
    client_->call(systemdManager, "StartUnit", "ss", unit, "replace");
    ASSERT_TRUE(becomes("active"));
    EXPECT_NE(client_->ownerOf(supplicantName), "");
    EXPECT_NE(client_->ownerOf(supplicantName), before);
    EXPECT_THAT(client_->valuesOf("ActiveState"),
                ElementsAre("deactivating", "inactive", "activating", "active"));
}

TEST_F(SystemdTest, HasTheSupplicantOnTheBusWhenTheUnitIsActive) {
    startDevice();
    for (int round = 0; round < 5; ++round) {
        client_->call(systemdManager, "RestartUnit", "ss", unit, "replace");
        client_->signals().clear();
        ASSERT_TRUE(becomes("active"));
        EXPECT_EQ(client_->get(supplicantRoot, "Interfaces"), nlohmann::json({supplicantInterface.path}));
    }
}

TEST_F(SystemdTest, FailsWhenTheSupplicantCrashesAndIsResetByHand) {
    startDevice();
    device_->crashSupplicant();
    ASSERT_TRUE(becomes("failed"));
    EXPECT_EQ(client_->ownerOf(supplicantName), "");
    client_->call(systemdManager, "ResetFailedUnit", "s", unit);
    EXPECT_TRUE(becomes("inactive"));
    client_->call(systemdManager, "StartUnit", "ss", unit, "replace");
    EXPECT_TRUE(becomes("active"));
}

TEST_F(SystemdTest, StartsTheSupplicantAgainAfterACrashWhenToldTo) {
    startDevice();
    device_->setAutoRestart(true);
    device_->crashSupplicant();
    ASSERT_TRUE(becomes("active"));
    EXPECT_THAT(client_->valuesOf("SubState"), ElementsAre("auto-restart", "start", "running"));
}

TEST_F(SystemdTest, DoesNothingForAUnitThatIsAlreadyThere) {
    startDevice();
    client_->call(systemdManager, "StartUnit", "ss", unit, "replace");
    ASSERT_TRUE(
        client_->waitForSignal("JobRemoved", [](const Signal& s) { return s.arguments.at(3) == "done"; }));
    EXPECT_THAT(client_->valuesOf("ActiveState"), IsEmpty());
}

TEST_F(SystemdTest, StopsAUnitThatIsStillStarting) {
    SimulatedDevice::Options options;
    options.neighbourhood.unitActive = false;
    options.neighbourhood.times.unitStart = std::chrono::hours(100);
    start(std::move(options));
    client_->call(systemdManager, "Subscribe");
    client_->call(systemdManager, "StartUnit", "ss", unit, "replace");
    client_->call(systemdManager, "StopUnit", "ss", unit, "replace");
    ASSERT_TRUE(becomes("inactive"));
    EXPECT_THAT(client_->valuesOf("ActiveState"), ElementsAre("activating", "deactivating", "inactive"));
    EXPECT_EQ(client_->ownerOf(supplicantName), "");
}

TEST_F(SystemdTest, TellsOfJobs) {
    startDevice();
    const std::string job = client_->call(systemdManager, "StopUnit", "ss", unit, "replace").at(0);
    EXPECT_TRUE(client_->waitForSignal("JobNew", [&](const Signal& s) { return s.arguments.at(1) == job; }));
    EXPECT_TRUE(client_->waitForSignal("JobRemoved", [&](const Signal& s) {
        return s.arguments.at(1) == job && s.arguments.at(2) == unit && s.arguments.at(3) == "done";
    }));
}

TEST_F(SystemdTest, SaysNothingToNobody) {
    startDevice(false);
    device_->crashSupplicant();
    client_->call(systemdManager, "StartUnit", "ss", unit, "replace");
    ASSERT_TRUE(client_->waitUntil([&] { return activeState() == "active"; }));
    EXPECT_THAT(client_->valuesOf("ActiveState"), IsEmpty());
}

TEST_F(SystemdTest, TellsTheServiceInterfaceBeforeTheUnitInterface) {
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

TEST_F(SystemdTest, ForcesAnyStateOnTheUnitAlone) {
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

TEST_F(SystemdTest, MayFindTheUnitInactiveAtFirst) {
    SimulatedDevice::Options options;
    options.neighbourhood.unitActive = false;
    start(std::move(options));
    EXPECT_EQ(activeState(), "inactive");
    EXPECT_EQ(client_->ownerOf(supplicantName), "");
    EXPECT_EQ(device_->supplicantState(), "");
}

TEST_F(SystemdTest, SaysGoodByeForTheSupplicantThatIsStopped) {
    startDevice();
    const std::string network = addNetwork(openNetwork("Cafe"));
    client_->call(systemdManager, "StopUnit", "ss", unit, "replace");
    EXPECT_TRUE(client_->waitForSignal("NetworkRemoved",
                                       [&](const Signal& s) { return s.arguments.at(0) == network; }));
    EXPECT_TRUE(client_->waitForSignal("InterfaceRemoved", [](const Signal&) { return true; }));
}

}  // namespace
}  // namespace kaz::sim::test
