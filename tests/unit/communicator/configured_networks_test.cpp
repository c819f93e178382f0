// The networks in the supplicant's configuration; disconnect and reconnect.
#include "unit/communicator/communicator_fixture.h"

#include <functional>

namespace kaz::wifi {
namespace {

const dbus::OPath network(networkPath);
const Answer refused = errorReply("fi.w1.wpa_supplicant1.UnknownError", "x");

class Networks : public CommunicatorTest {
  protected:
    Networks() { startAttached(); }

    std::optional<std::string> configuredSsid() {
        forget();
        return onLoop([&] { return communicator->configuredNetworks().ssidSync(network); });
    }
    std::optional<std::string> configuredSsid(const std::string& text) {
        onNetworkProperties(reply("v", "a{sv}", 2, "priority", "s", "1", "ssid", "s", text));
        return configuredSsid();
    }

    bool run(const std::function<bool(DbusCommunicator&)>& operation) {
        forget();
        return onLoop([&] { return operation(*communicator); });
    }
};

TEST_F(Networks, SelectSendsThePath) {
    const auto select = [](DbusCommunicator& c) { return c.configuredNetworks().selectSync(network); };
    onInterface("SelectNetwork", reply(""));
    EXPECT_TRUE(run(select));
    EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("SelectNetwork", "o\"" + networkPath + '"')));
    EXPECT_THAT(takeLog(), ElementsAre(debug("Selected network " + networkPath)));
    onInterface("SelectNetwork", refused);
    EXPECT_FALSE(run(select));
    EXPECT_FALSE(log.contains("Selected network"));
}

TEST_F(Networks, RemoveSendsThePath) {
    const auto remove = [](DbusCommunicator& c) { return c.configuredNetworks().removeSync(network); };
    onInterface("RemoveNetwork", reply(""));
    EXPECT_TRUE(run(remove));
    EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("RemoveNetwork", "o\"" + networkPath + '"')));
    EXPECT_THAT(takeLog(), ElementsAre(debug("Removed network " + networkPath)));
    onInterface("RemoveNetwork", refused);
    EXPECT_FALSE(run(remove));
    EXPECT_FALSE(log.contains("Removed network"));
}

TEST_F(Networks, ChangesByOtherClientsAreReportedOnce) {
    emitFromInterface("NetworkAdded", "oa{sv}", networkPath, 0);
    emitFromInterface("NetworkAdded", "oa{sv}", networkPath, 0);
    emitFromInterface("NetworkRemoved", "o", networkPath);
    emitFromInterface("NetworkRemoved", "o", networkPath);
    emitFromInterface("NetworkAdded", "s", "not a path");
    settle();
    EXPECT_THAT(takeCalls(), ElementsAre("configured networks changed", "configured networks changed"));
}

// The supplicant also signals what we did, and what the list that we read had already.
TEST_F(Networks, OwnAndListedChangesAreNotReported) {
    const std::string other = networkPath + '1';
    onInterface("AddNetwork", reply("o", networkPath));
    onInterface("RemoveNetwork", reply(""));
    supplicant.onGet(interfacePath, interfaceInterface, "Networks", reply("v", "ao", 1, other));
    supplicant.onGet(other, networkInterface, "Properties", reply("v", "a{sv}", 1, "ssid", "s", "\"Home\""));
    onLoop([&] {
        communicator->configuredNetworks().listSync();
        communicator->configuredNetworks().addSync(openNetwork("Cafe"), {});
    });
    forget();
    emitFromInterface("NetworkAdded", "oa{sv}", other, 0);
    emitFromInterface("NetworkAdded", "oa{sv}", networkPath, 0);
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
    onLoop([&] { communicator->configuredNetworks().removeSync(dbus::OPath(other)); });
    forget();
    emitFromInterface("NetworkRemoved", "o", other);
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(Networks, EnablingSendsABoolean) {
    supplicant.onSet(networkPath, networkInterface, "Enabled", reply(""));
    EXPECT_TRUE(run([](auto& c) { return c.configuredNetworks().setEnabledSync(network, true); }));
    EXPECT_THAT(takeCalls(), ElementsAre(setText(networkPath, networkInterface, "Enabled", "<true>")));
    EXPECT_TRUE(run([](auto& c) { return c.configuredNetworks().setEnabledSync(network, false); }));
    EXPECT_THAT(takeCalls(), ElementsAre(setText(networkPath, networkInterface, "Enabled", "<false>")));
    EXPECT_THAT(takeLog(), IsEmpty());
    supplicant.onSet(networkPath, networkInterface, "Enabled", refused);
    EXPECT_FALSE(run([](auto& c) { return c.configuredNetworks().setEnabledSync(network, true); }));
}

TEST_F(Networks, PriorityIsSentAsTheOnlyProperty) {
    supplicant.onSet(networkPath, networkInterface, "Properties", reply(""));
    for (const int priority : {2, 1, 0, -1}) {
        EXPECT_TRUE(run([=](auto& c) { return c.configuredNetworks().setPrioritySync(network, priority); }));
        EXPECT_THAT(takeCalls(),
                    ElementsAre(setText(networkPath, networkInterface, "Properties",
                                        "<{\"priority\": <i" + std::to_string(priority) + ">}>")));
    }
    EXPECT_THAT(takeLog(), IsEmpty());
    supplicant.onSet(networkPath, networkInterface, "Properties", refused);
    EXPECT_FALSE(run([](auto& c) { return c.configuredNetworks().setPrioritySync(network, 1); }));
}

TEST_F(Networks, SaveLogsSuccessAndFailure) {
    const auto save = [](DbusCommunicator& c) { return c.saveNetworkConfigurationSync(); };
    onInterface("SaveConfig", reply(""));
    EXPECT_TRUE(run(save));
    EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("SaveConfig")));
    EXPECT_THAT(takeLog(), ElementsAre(debug("Saved new wpa_supplicant config")));
    onInterface("SaveConfig", refused);
    EXPECT_FALSE(run(save));
    EXPECT_EQ(log.records().back(), error("Couldn't save wpa_supplicant config"));
    EXPECT_FALSE(log.contains("Saved"));
}

TEST_F(Networks, DisconnectAndReconnectLogNothing) {
    onInterface("Disconnect", reply(""));
    onInterface("Reconnect", reply(""));
    EXPECT_TRUE(run([](auto& c) { return c.disconnectSync(); }));
    EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("Disconnect")));
    EXPECT_TRUE(run([](auto& c) { return c.reconnectSync(); }));
    EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("Reconnect")));
    EXPECT_THAT(takeLog(), IsEmpty());
    onInterface("Disconnect", errorReply("fi.w1.wpa_supplicant1.NotConnected", "x"));
    onInterface("Reconnect", refused);
    EXPECT_FALSE(run([](auto& c) { return c.disconnectSync(); }));
    EXPECT_FALSE(run([](auto& c) { return c.reconnectSync(); }));
}

TEST_F(Networks, SsidIsReadInQuotesOrHexadecimalDigits) {
    EXPECT_EQ(configuredSsid("\"Home\""), "Home");
    EXPECT_THAT(takeCalls(), ElementsAre(getNetworkProperties));
    EXPECT_EQ(configuredSsid("486f6d65"), "Home");
    EXPECT_EQ(configuredSsid(""), "");
    EXPECT_EQ(configuredSsid("00ff22"), std::string("\0\xff\"", 3));
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(Networks, UndecodableSsidTextReturnsNoSsid) {
    EXPECT_EQ(configuredSsid("486"), std::nullopt);
    EXPECT_THAT(takeLog(),
                ElementsAre(warning("Couldn't decode SSID for " + networkPath + " (ssid=\"486\")")));
    EXPECT_EQ(configuredSsid("\""), std::nullopt);
    EXPECT_THAT(takeLog(),
                ElementsAre(warning("Couldn't decode SSID for " + networkPath + " (ssid=\"\\\"\")")));
}

TEST_F(Networks, PropertiesWithoutSsidReturnNoSsid) {
    onNetworkProperties(reply("v", "a{sv}", 1, "SSID", "s", "\"Home\""));
    EXPECT_EQ(configuredSsid(), std::nullopt);
    EXPECT_THAT(takeLog(), ElementsAre(warning("Couldn't get SSID for " + networkPath + ", no value set.")));
}

TEST_F(Networks, UndecodablePropertiesReturnNoSsid) {
    onNetworkProperties(reply("v", "a{sv}", 1, "ssid", "ay", 1, 'H'));
    EXPECT_EQ(configuredSsid(), std::nullopt);
    const std::string reason =
        "Unable to read from variant: Value decoding error: Unable to read from variant: "
        "No such device or address";
    EXPECT_THAT(takeLog(),
                ElementsAre(warning(decodingFailed + reason),
                            warning("Couldn't get SSID for " + networkPath + ". Error " + reason)));
}

TEST_F(Networks, FailedReadOfPropertiesReturnsNoSsid) {
    onNetworkProperties(errorReply("org.freedesktop.DBus.Error.UnknownObject", "x"));
    EXPECT_EQ(configuredSsid(), std::nullopt);
    const auto records = takeLog();
    ASSERT_EQ(records.size(), 2U);  // the first is about the call
    EXPECT_EQ(records[1], warning("Couldn't get SSID for " + networkPath + ". Error Already failed"));
}

TEST_F(Networks, ListKeepsTheOrderOfTheSupplicantAndNetworksWithoutSsid) {
    supplicant.onGet(interfacePath, interfaceInterface, "Networks",
                     reply("v", "ao", 3, "/n/2", "/n/0", "/n/1"));
    supplicant.onGet("/n/2", networkInterface, "Properties", reply("v", "a{sv}", 1, "ssid", "s", "\"Home\""));
    supplicant.onGet("/n/1", networkInterface, "Properties", reply("v", "a{sv}", 1, "ssid", "s", "4f"));
    forget();
    const auto networks = onLoop([&] { return communicator->getAllConfiguredNetworksSync(); });
    EXPECT_THAT(takeCalls(), ElementsAre(getText(interfacePath, interfaceInterface, "Networks"),
                                         getText("/n/2", networkInterface, "Properties"),
                                         getText("/n/0", networkInterface, "Properties"),
                                         getText("/n/1", networkInterface, "Properties")));
    ASSERT_EQ(networks.size(), 3U);
    EXPECT_EQ(networks[0]->getSsid(), "Home");
    EXPECT_EQ(networks[1]->getSsid(), std::nullopt);
    EXPECT_EQ(networks[2]->getSsid(), "O");
    EXPECT_EQ(networks[1]->id(), std::hash<std::string>{}("/n/0"));
}

TEST_F(Networks, ListAfterATimeoutHasNetworksWithoutSsid) {
    limitCalls(std::chrono::seconds(1));
    startAttached();
    supplicant.onGet(interfacePath, interfaceInterface, "Networks",
                     reply("v", "ao", 3, "/n/0", "/n/1", "/n/2"));
    for (const char* path : {"/n/0", "/n/1", "/n/2"}) {
        supplicant.onGet(path, networkInterface, "Properties", noReply());
    }
    const auto networks = onLoop([&] { return communicator->getAllConfiguredNetworksSync(); });
    EXPECT_THAT(takeCalls(), ElementsAre(getText(interfacePath, interfaceInterface, "Networks"),
                                         getText("/n/0", networkInterface, "Properties")));
    ASSERT_EQ(networks.size(), 3U) << "they can still be enabled";
    for (const auto& listed : networks) {
        EXPECT_EQ(listed->getSsid(), std::nullopt);
    }
    EXPECT_EQ(takeLog().back(), warning("wpa_supplicant is too slow, the SSIDs of 2 networks stay unknown"));
}

TEST_F(Networks, EmptyOrFailedListReturnsNoNetworks) {
    for (const Answer& answer : {reply("v", "ao", 0), refused, reply("v", "as", 1, "/n/0"), reply("")}) {
        supplicant.onGet(interfacePath, interfaceInterface, "Networks", answer);
        forget();
        EXPECT_THAT(onLoop([&] { return communicator->getAllConfiguredNetworksSync(); }), IsEmpty());
        EXPECT_THAT(takeCalls(), ElementsAre(getText(interfacePath, interfaceInterface, "Networks")));
    }
}

}  // namespace
}  // namespace kaz::wifi
