// The report that follows from PropertiesChanged of the supplicant's interface.
#include "unit/communicator/communicator_fixture.h"

#include <climits>

namespace kaz::wifi {
namespace {

class PropertiesChanged : public CommunicatorTest {
  protected:
    PropertiesChanged() { startAttached(); }

    // The report, calls and log records of a change.
    template <typename... Values>
    void change(int count, Values... given) {
        forget();
        emitPropertiesChanged(count, given...);
        settle();
    }

    void addBss(const std::string& path, const std::string& ssid, int signal) {
        supplicant.onGetAll(path, bssInterface, test::replyWith([=](sd_bus_message* message) {
                                sd_bus_message_open_container(message, 'a', "{sv}");
                                sd_bus_message_open_container(message, 'e', "sv");
                                sd_bus_message_append(message, "s", "SSID");
                                sd_bus_message_open_container(message, 'v', "ay");
                                sd_bus_message_append_array(message, 'y', ssid.data(), ssid.size());
                                sd_bus_message_close_container(message);
                                sd_bus_message_close_container(message);
                                sd_bus_message_append(message, "{sv}", "Signal", "n", signal);
                                sd_bus_message_close_container(message);
                            }));
    }
};

TEST_F(PropertiesChanged, UnknownPropertiesStillReport) {
    change(0);
    EXPECT_THAT(takeCalls(), ElementsAre("report: nothing"));
    change(1, "Capabilities", "a{sv}", 0);
    EXPECT_THAT(takeCalls(), ElementsAre("report: nothing"));
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(PropertiesChanged, ScanningTrueIsReported) {
    change(1, "Scanning", "b", 1);
    EXPECT_THAT(takeCalls(), ElementsAre("report: scanning=true"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: Scanning=true")));
}

TEST_F(PropertiesChanged, ScanningFalseAloneReportsNoChange) {
    change(1, "Scanning", "b", 0);
    EXPECT_THAT(takeCalls(), ElementsAre("report: nothing"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: Scanning=false (ignored)")));
}

// The supplicant reports no change when only the signal of its access points changes.
TEST_F(PropertiesChanged, BssListIsReadAgainOnRequest) {
    addBss(bssPath, "Home", -60);
    supplicant.onGet(interfacePath, interfaceInterface, "BSSs", reply("v", "ao", 1, bssPath));
    forget();
    onLoop([&] { communicator->refreshBssListSync(); });
    EXPECT_THAT(takeCalls(),
                ElementsAre(getText(interfacePath, interfaceInterface, "BSSs"),
                            getAllText(bssPath, bssInterface), "report: bssList=Set(\"Home\" -60 dBm none)"));
    supplicant.onGet(interfacePath, interfaceInterface, "BSSs", reply("v", "ao", 0));
    onLoop([&] { communicator->refreshBssListSync(); });
    EXPECT_THAT(takeCalls(),
                ElementsAre(getText(interfacePath, interfaceInterface, "BSSs"), "report: bssList=Cleared"));
    supplicant.onGet(interfacePath, interfaceInterface, "BSSs", errorReply("org.example.Busy", "busy"));
    onLoop([&] { communicator->refreshBssListSync(); });
    EXPECT_THAT(takeCalls(), ElementsAre(getText(interfacePath, interfaceInterface, "BSSs")));
}

TEST_F(PropertiesChanged, StateIsReadAgainOnRequest) {
    supplicant.onGetAll(interfacePath, interfaceInterface, reply("a{sv}", 1, "State", "s", "completed"));
    forget();
    onLoop([&] { communicator->refreshSync(); });
    EXPECT_THAT(takeCalls(),
                ElementsAre(getAllText(interfacePath, interfaceInterface), "report: status=Connected"));
    onLoop([&] { communicator->connectOrDisconnectFromSupplicantSync("inactive"); });
    forget();
    onLoop([&] { communicator->refreshSync(); });
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(takeLog(), ElementsAre(debug("Can't read the state, wpa_supplicant isn't running.")));
}

TEST_F(PropertiesChanged, BssListIsReportedInOrder) {
    addBss(bssPath, "Home", -60);
    addBss("/other", "Home", -70);
    change(1, "BSSs", "ao", 2, "/other", bssPath);
    EXPECT_THAT(takeCalls(),
                ElementsAre(getAllText("/other", bssInterface), getBssProperties,
                            "report: bssList=Set(\"Home\" -70 dBm none, \"Home\" -60 dBm none)"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: BSSs=2 values, decoded=2")));
}

TEST_F(PropertiesChanged, BssListOmitsVanishedBsss) {
    addBss(bssPath, "Home", -60);
    change(1, "BSSs", "ao", 3, "/gone", bssPath, "/gone/too");
    EXPECT_THAT(takeCalls(), ElementsAre(getAllText("/gone", bssInterface), getBssProperties,
                                         getAllText("/gone/too", bssInterface),
                                         "report: bssList=Set(\"Home\" -60 dBm none)"));
    EXPECT_EQ(takeLog().back(), debug("PropertiesChanged: BSSs=3 values, decoded=1"));
}

TEST_F(PropertiesChanged, BssListWithOnlyVanishedBsssIsSetNotCleared) {
    change(1, "BSSs", "ao", 1, "/gone");
    EXPECT_THAT(takeCalls(), ElementsAre(getAllText("/gone", bssInterface), "report: bssList=Set"));
}

TEST_F(PropertiesChanged, EmptyBssListIsReportedAsClearedWithoutARecord) {
    change(1, "BSSs", "ao", 0);
    EXPECT_THAT(takeCalls(), ElementsAre("report: bssList=Cleared"));
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(PropertiesChanged, CurrentNetworkIsReportedByItsSsid) {
    onNetworkProperties(reply("v", "a{sv}", 1, "ssid", "s", "486f6d65"));
    change(1, "CurrentNetwork", "o", networkPath);
    EXPECT_THAT(takeCalls(), ElementsAre(getNetworkProperties, "report: network=Set(\"Home\")"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: CurrentNetwork=" + networkPath)));
}

TEST_F(PropertiesChanged, CurrentNetworkAtTheRootPathIsReportedAsCleared) {
    change(1, "CurrentNetwork", "o", "/");
    EXPECT_THAT(takeCalls(), ElementsAre("report: network=Cleared"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: CurrentNetwork=/")));
}

TEST_F(PropertiesChanged, CurrentNetworkWithUnreadableSsidIsReportedAsUnchanged) {
    onNetworkProperties(reply("v", "a{sv}", 0));
    change(1, "CurrentNetwork", "o", networkPath);
    EXPECT_THAT(takeCalls(), ElementsAre(getNetworkProperties, "report: nothing"));
    EXPECT_THAT(takeLog(), ElementsAre(warning("Couldn't get SSID for " + networkPath + ", no value set."),
                                       debug("PropertiesChanged: CurrentNetwork=" + networkPath)));
}

TEST_F(PropertiesChanged, CurrentBssIsReported) {
    addBss(bssPath, std::string("\0\xff", 2), -42);
    change(1, "CurrentBSS", "o", bssPath);
    EXPECT_THAT(takeCalls(), ElementsAre(getBssProperties, "report: bss=Set(\"" + std::string("\0\xff", 2) +
                                                               "\" -42 dBm none)"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: CurrentBSS=" + bssPath)));
}

TEST_F(PropertiesChanged, CurrentBssAtTheRootPathIsReportedAsCleared) {
    change(1, "CurrentBSS", "o", "/");
    EXPECT_THAT(takeCalls(), ElementsAre("report: bss=Cleared"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: CurrentBSS=/")));
}

TEST_F(PropertiesChanged, VanishedCurrentBssIsReportedAsUnchanged) {
    change(1, "CurrentBSS", "o", bssPath);
    EXPECT_THAT(takeCalls(), ElementsAre(getBssProperties, "report: nothing"));
    EXPECT_EQ(takeLog().back(), debug("PropertiesChanged: CurrentBSS=" + bssPath));
}

TEST_F(PropertiesChanged, StateIsReportedAsStatus) {
    change(1, "State", "s", "4way_handshake");
    EXPECT_THAT(takeCalls(), ElementsAre("report: status=Connecting"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: State=4way_handshake")));
}

TEST_F(PropertiesChanged, UnknownStateReportsNoStatusAndLogsOneWarning) {
    change(1, "State", "s", "dreaming");
    EXPECT_THAT(takeCalls(), ElementsAre("report: nothing"));
    EXPECT_THAT(takeLog(), ElementsAre(warning("wpa_supplicant in unknown state (\"dreaming\")"),
                                       debug("PropertiesChanged: State=dreaming")));
}

TEST_F(PropertiesChanged, DisconnectReasonIsLoggedAndReportsNoChange) {
    const std::vector<std::pair<int, std::string>> reasons{
        {3, "3(DEAUTH_LEAVING) "},
        {-15, "-15(4WAY_HANDSHAKE_TIMEOUT) "},
        {15, "15(4WAY_HANDSHAKE_TIMEOUT) "},
        {0, "0(<unknown>) "},
        {-67, "-67(<unknown>) "},
        {INT_MAX, "2147483647(<unknown>) "},
        {INT_MIN, "-2147483648(<unknown>) "},
    };
    for (const auto& [reason, text] : reasons) {
        change(1, "DisconnectReason", "i", reason);
        EXPECT_THAT(takeCalls(), ElementsAre("report: nothing")) << reason;
        EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: DisconnectReason=" + text))) << reason;
    }
}

TEST_F(PropertiesChanged, AllPropertiesAreResolvedInThisOrderIntoOneReport) {
    addBss(bssPath, "Home", -60);
    onNetworkProperties(reply("v", "a{sv}", 1, "ssid", "s", "\"Home\""));
    change(6, "DisconnectReason", "i", 1, "State", "s", "completed", "CurrentBSS", "o", bssPath,
           "CurrentNetwork", "o", networkPath, "Scanning", "b", 1, "BSSs", "ao", 1, bssPath);
    EXPECT_THAT(takeCalls(),
                ElementsAre(getBssProperties, getNetworkProperties, getBssProperties,
                            "report: scanning=true bssList=Set(\"Home\" -60 dBm none) network=Set(\"Home\") "
                            "bss=Set(\"Home\" -60 dBm none) status=Connected"));
    EXPECT_THAT(takeLog(), ElementsAre(debug("PropertiesChanged: BSSs=1 values, decoded=1"),
                                       debug("PropertiesChanged: Scanning=true"),
                                       debug("PropertiesChanged: CurrentNetwork=" + networkPath),
                                       debug("PropertiesChanged: CurrentBSS=" + bssPath),
                                       debug("PropertiesChanged: State=completed"),
                                       debug("PropertiesChanged: DisconnectReason=1(UNSPECIFIED) ")));
}

TEST_F(PropertiesChanged, PropertiesOfAnotherInterfaceAreIgnored) {
    for (const std::string interface :
         {"fi.w1.wpa_supplicant1.Interface.WPS", "fi.w1.wpa_supplicant1.interface", ""}) {
        forget();
        supplicant.emit(interfacePath, propertiesInterface, "PropertiesChanged",
                        values("sa{sv}as", interface, 1, "State", "s", "completed", 0));
        settle();
        EXPECT_THAT(takeCalls(), IsEmpty());
        EXPECT_THAT(takeLog(), ElementsAre(debug("Ignoring PropertiesChanged on " + interface)));
    }
}

TEST_F(PropertiesChanged, PropertiesWithoutInterfaceNameAreLoggedAndDropped) {
    supplicant.emit(interfacePath, propertiesInterface, "PropertiesChanged", values("i", 1));
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(takeLog(), ElementsAre(warning(decodingFailed + noSuchType),
                                       warning("Couldn't decode wpa_supplicant PropertiesChanged (" +
                                               noSuchType + ")")));
}

TEST_F(PropertiesChanged, UndecodablePropertiesAreLoggedAndDropped) {
    change(2, "Scanning", "b", 1, "State", "i", 1);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(takeLog(), ElementsAre(warning(decodingFailed + noSuchValue),
                                       warning("Couldn't decode wpa_supplicant PropertiesChanged (" +
                                               noSuchValue + ")")));
}

TEST_F(PropertiesChanged, UndecodablePropertiesOfAnotherInterfaceAreLogged) {
    supplicant.emit(interfacePath, propertiesInterface, "PropertiesChanged",
                    values("sa{sv}as", "com.example.Other", 1, "State", "i", 1, 0));
    settle();
    EXPECT_EQ(log.texts(spdlog::level::warn).size(), 2U);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

}  // namespace
}  // namespace kaz::wifi
