// The operations that are refused while detached.
#include "communicator/configured_network.h"
#include "unit/communicator/communicator_fixture.h"

#include <functional>

namespace kaz::wifi {
namespace {

struct Refusal {
    const char* operation;
    // True when the operation returned its failure value.
    std::function<bool(DbusCommunicator&)> fails;
    LogRecord record;
};

const dbus::OPath networkObject(networkPath);

const std::vector<Refusal> refusals{
    {"addNetworkSync", [](auto& c) { return c.addNetworkSync(openNetwork("Home"), {}) == nullptr; },
     warning("Can't add network, wpa_supplicant isn't running.")},
    {"selectNetworkSync", [](auto& c) { return !c.configuredNetworks().selectSync(networkObject); },
     warning("Can't select network, wpa_supplicant isn't running.")},
    {"removeNetworkSync", [](auto& c) { return !c.configuredNetworks().removeSync(networkObject); },
     warning("Can't remove network, wpa_supplicant isn't running.")},
    {"setNetworkEnabledSync",
     [](auto& c) { return !c.configuredNetworks().setEnabledSync(networkObject, true); },
     warning("Can't enable network, wpa_supplicant isn't running.")},
    {"getConfiguredSsidForNetworkSync",
     [](auto& c) { return !c.configuredNetworks().ssidSync(networkObject); },
     warning("Can't get network ssid, wpa_supplicant isn't running.")},
    {"getAllConfiguredNetworksSync", [](auto& c) { return c.getAllConfiguredNetworksSync().empty(); },
     warning("Can't list configured networks, wpa_supplicant isn't running.")},
    {"saveNetworkConfigurationSync", [](auto& c) { return !c.saveNetworkConfigurationSync(); },
     warning("Can't save configuration, wpa_supplicant isn't running.")},
    {"disconnectSync", [](auto& c) { return !c.disconnectSync(); },
     warning("Can't disconnect, wpa_supplicant isn't running.")},
    {"reconnectSync", [](auto& c) { return !c.reconnectSync(); },
     warning("Can't reconnect, wpa_supplicant isn't running.")},
    {"scanSync", [](auto& c) { return !c.scanSync(); }, debug("Can't scan, wpa_supplicant isn't running.")},
    {"getBssPropertiesSync", [](auto& c) { return !c.radio().bssSync(bssPath); },
     warning("Can't get bss properties, wpa_supplicant isn't running.")},
    {"decodeBssPaths", [](auto& c) { return c.radio().bssListSync({bssPath}).empty(); },
     warning("Can't get bss properties, wpa_supplicant isn't running.")},
    {"signalPollSync", [](auto& c) { return !c.signalPollSync(); },
     warning("Can't poll for signal strength, wpa_supplicant isn't running.")},
    {"refreshBssListSync", [](auto& c) { return c.refreshBssListSync(), true; },
     debug("Can't read the BSS list, wpa_supplicant isn't running.")},
};

class Refusals : public CommunicatorTest {};

TEST_F(Refusals, OperationWhileDetachedIsRefusedWithItsTextAndNoCall) {
    startDetached();
    for (const Refusal& refusal : refusals) {
        EXPECT_TRUE(onLoop([&] { return refusal.fails(*communicator); })) << refusal.operation;
        EXPECT_THAT(takeLog(), ElementsAre(refusal.record)) << refusal.operation;
        EXPECT_THAT(takeCalls(), IsEmpty()) << refusal.operation;
    }
}

TEST_F(Refusals, OperationWhileAttachedIsNotRefused) {
    startAttached();
    for (const Refusal& refusal : refusals) {
        onLoop([&] { return refusal.fails(*communicator); });
        EXPECT_FALSE(log.contains("wpa_supplicant isn't running.")) << refusal.operation;
        EXPECT_EQ(takeCalls().size(), 1U) << refusal.operation;
    }
}

TEST_F(Refusals, OperationAfterADetachIsRefusedAgain) {
    startAttached();
    onLoop([&] { communicator->connectOrDisconnectFromSupplicantSync("failed"); });
    forget();
    EXPECT_FALSE(onLoop([&] { return communicator->reconnectSync(); }));
    EXPECT_THAT(takeLog(), ElementsAre(warning("Can't reconnect, wpa_supplicant isn't running.")));
}

TEST_F(Refusals, PriorityWhileDetachedIsSentAndFails) {
    startDetached();
    EXPECT_FALSE(
        onLoop([&] { return communicator->configuredNetworks().setPrioritySync(networkObject, 2); }));
    EXPECT_THAT(takeCalls(),
                ElementsAre(setText(networkPath, networkInterface, "Properties", R"(<{"priority": <i2>}>)")));
    EXPECT_FALSE(log.contains("isn't running"));
}

TEST_F(Refusals, EapMethodsWhileDetachedAreRead) {
    supplicant.onGet(rootPath, rootInterface, "EapMethods", reply("v", "as", 1, "PEAP"));
    startDetached();
    EXPECT_THAT(onLoop([&] { return communicator->eapMethodsSync(); }), ElementsAre("PEAP"));
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(Refusals, HandleFromBeforeADetachIsRefused) {
    onInterface("AddNetwork", reply("o", networkPath));
    startAttached();
    const auto handle = onLoop([&] { return communicator->addNetworkSync(openNetwork("Home"), {}); });
    ASSERT_NE(handle, nullptr);
    onLoop([&] { communicator->connectOrDisconnectFromSupplicantSync("inactive"); });
    forget();
    EXPECT_FALSE(onLoop([&] { return handle->selectSync(); }));
    EXPECT_FALSE(onLoop([&] { return handle->removeSync(); }));
    EXPECT_FALSE(onLoop([&] { return handle->setEnabledSync(true); }));
    EXPECT_THAT(takeLog(), ElementsAre(warning("Can't select network, wpa_supplicant isn't running."),
                                       warning("Can't remove network, wpa_supplicant isn't running."),
                                       warning("Can't enable network, wpa_supplicant isn't running.")));
    EXPECT_THAT(takeCalls(), IsEmpty());
}

}  // namespace
}  // namespace kaz::wifi
