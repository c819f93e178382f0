// The order in which match rules are added and dropped, recorded by a monitor of the bus.
#include "doubles/recording_bus/recording_bus.h"
#include "unit/communicator/communicator_fixture.h"

namespace kaz::wifi {
namespace {

class MatchRules : public CommunicatorTest {
  protected:
    MatchRules() {
        communicator->wifiServiceStatusChangeHandler = [this] { mark("status-changed"); };
    }

    // Makes a call that marks this moment in the traffic. Loop thread only.
    void mark(const std::string& name) {
        communicator->configuredNetworks().setPrioritySync(dbus::OPath("/mark"),
                                                           static_cast<int>(marks.size()));
        marks.push_back(name);
    }

    // The traffic on the bus since the start, with marks by their names and without the rules of the first task.
    std::vector<std::string> traffic() {
        onLoop([&] { mark("end"); });
        const std::string mine = "call fi.w1.wpa_supplicant1 /mark ";
        const auto count = [&](const test::CallLog::Calls& seen) {
            return std::count_if(seen.begin(), seen.end(),
                                 [&](const std::string& line) { return line.starts_with(mine); });
        };
        EXPECT_TRUE(seenOnBus.waitFor([&](const auto& seen) { return count(seen) == std::ssize(marks); }));
        std::vector<std::string> result;
        auto name = marks.begin();
        for (const std::string& line : seenOnBus.calls()) {
            result.push_back(line.starts_with(mine) ? *name++ : line);
        }
        EXPECT_THAT(result, testing::Contains(interfaceMatch("Added")).Times(1));
        EXPECT_THAT(result, testing::Contains(interfaceMatch("Removed")).Times(1));
        std::erase(result, interfaceMatch("Added"));
        std::erase(result, interfaceMatch("Removed"));
        return result;
    }

    // The rules that stay while the supplicant's interfaces come and go.
    static std::string interfaceMatch(const std::string& change) {
        return "match fi.w1.wpa_supplicant1.Interface" + change + " of fi.w1.wpa_supplicant1 " + rootPath;
    }

    static std::string supplicantMatch(const std::string& verb, const std::string& signal) {
        return verb + ' ' + signal + " of fi.w1.wpa_supplicant1 " + interfacePath;
    }

    const std::string networkdMatch =
        " org.freedesktop.DBus.Properties.PropertiesChanged of org.freedesktop.network1 " + networkdPath;
    const std::string unitMatch =
        "match org.freedesktop.DBus.Properties.PropertiesChanged of org.freedesktop.systemd1 ";

    std::vector<std::string> marks;
    test::CallLog seenOnBus;
    test::RecordingBus recordingBus{bus.address(), seenOnBus};
};

TEST_F(MatchRules, UnitRuleIsAddedAfterSubscribeAndBeforeActiveStateIsRead) {
    start("inactive");
    EXPECT_THAT(traffic(), ElementsAre("call org.freedesktop.systemd1 " + callLoadUnit,
                                       "call org.freedesktop.systemd1 " + callSubscribe, unitMatch + unitPath,
                                       "call org.freedesktop.systemd1 " + getUnitState, "end"));
}

TEST_F(MatchRules, AttachAddsRulesInThisOrder) {
    start("active");
    const auto all = traffic();
    ASSERT_GT(all.size(), 4U);
    EXPECT_THAT(std::vector<std::string>(all.begin() + 4, all.end()),
                ElementsAre("call fi.w1.wpa_supplicant1 " + getInterfaces,
                            supplicantMatch("match", interfaceInterface + ".ScanDone"),
                            supplicantMatch("match", interfaceInterface + ".EAP"),
                            supplicantMatch("match", interfaceInterface + ".NetworkSelected"),
                            supplicantMatch("match", propertiesInterface + ".PropertiesChanged"),
                            "call fi.w1.wpa_supplicant1 " + getInterfaceProperties, "match" + networkdMatch,
                            "call org.freedesktop.network1 " + getNetworkdProperties,
                            supplicantMatch("match", interfaceInterface + ".NetworkAdded"),
                            supplicantMatch("match", interfaceInterface + ".NetworkRemoved"),
                            supplicantMatch("match", interfaceInterface + ".PskMismatch"),
                            supplicantMatch("match", interfaceInterface + ".SaePasswordMismatch"),
                            "status-changed", "end"));
}

TEST_F(MatchRules, DetachDropsOnlyTheRulesOfTheAttachAfterTheStatusHandler) {
    start("active");
    onLoop([&] {
        mark("detaching");
        communicator->connectOrDisconnectFromSupplicantSync("inactive");
    });
    const auto all = traffic();
    const auto detaching = std::find(all.begin(), all.end(), "detaching");
    ASSERT_NE(detaching, all.end());
    const std::vector<std::string> since(detaching, all.end());
    EXPECT_THAT(since, testing::UnorderedElementsAre(
                           "detaching", "status-changed",
                           supplicantMatch("unmatch", interfaceInterface + ".ScanDone"),
                           supplicantMatch("unmatch", interfaceInterface + ".EAP"),
                           supplicantMatch("unmatch", interfaceInterface + ".NetworkSelected"),
                           supplicantMatch("unmatch", propertiesInterface + ".PropertiesChanged"),
                           supplicantMatch("unmatch", interfaceInterface + ".NetworkAdded"),
                           supplicantMatch("unmatch", interfaceInterface + ".NetworkRemoved"),
                           supplicantMatch("unmatch", interfaceInterface + ".PskMismatch"),
                           supplicantMatch("unmatch", interfaceInterface + ".SaePasswordMismatch"),
                           "unmatch" + networkdMatch, "end"));
    EXPECT_EQ(since[1], "status-changed");
}

TEST_F(MatchRules, SupplicantWithoutInterfaceAddsNoRule) {
    onInterfaces(reply("v", "ao", 0));
    start("active");
    const auto all = traffic();
    ASSERT_GT(all.size(), 4U);
    EXPECT_THAT(std::vector<std::string>(all.begin() + 4, all.end()),
                ElementsAre("call fi.w1.wpa_supplicant1 " + getInterfaces, "end"));
}

TEST_F(MatchRules, UnitThatIsLoadedAgainGetsNoSecondRule) {
    start("inactive");
    onLoop([&] { communicator->unit().connectSync(); });
    EXPECT_THAT(traffic(), testing::Contains(unitMatch + unitPath).Times(1));
}

TEST_F(MatchRules, FailedLoadUnitAddsTheRuleAndReadsTheStateForTheRootPath) {
    onSystemd("LoadUnit", errorReply("org.freedesktop.systemd1.LoadFailed", "x"));
    start("active");
    const auto all = traffic();
    ASSERT_EQ(all.size(), 5U);
    EXPECT_EQ(all[2], unitMatch + '/');
    EXPECT_EQ(all[3], "call org.freedesktop.systemd1 " + getText("/", unitInterface, "ActiveState"));
}

}  // namespace
}  // namespace kaz::wifi
