// The handle on a configured network.
#include "unit/communicator/communicator_fixture.h"

namespace kaz::wifi {
namespace {

class ConfiguredNetworkHandle : public CommunicatorTest {
  protected:
    ConfiguredNetworkHandle() {
        supplicant.onGet(interfacePath, interfaceInterface, "Networks", reply("v", "ao", 1, networkPath));
        onInterface("SelectNetwork", reply(""));
        onInterface("RemoveNetwork", reply(""));
        supplicant.onSet(networkPath, networkInterface, "Enabled", reply(""));
        supplicant.onSet(networkPath, networkInterface, "Properties", reply(""));
        startAttached();
    }

    // The only network.
    std::unique_ptr<Communicator::ConfiguredNetwork> handle() {
        auto networks = onLoop([&] { return communicator->getAllConfiguredNetworksSync(); });
        EXPECT_EQ(networks.size(), 1U);
        forget();
        return std::move(networks.at(0));
    }

    void expectAtWork(Communicator::ConfiguredNetwork& network) {
        EXPECT_TRUE(onLoop([&] { return network.selectSync(); }));
        EXPECT_TRUE(onLoop([&] { return network.setEnabledSync(false); }));
        EXPECT_TRUE(onLoop([&] { return network.setPrioritySync(2); }));
        EXPECT_TRUE(onLoop([&] { return network.removeSync(); }));
        EXPECT_THAT(takeCalls(), ElementsAre(interfaceCall("SelectNetwork", "o\"" + networkPath + '"'),
                                             setText(networkPath, networkInterface, "Enabled", "<false>"),
                                             setText(networkPath, networkInterface, "Properties",
                                                     R"(<{"priority": <i2>}>)"),
                                             interfaceCall("RemoveNetwork", "o\"" + networkPath + '"')));
    }
};

TEST_F(ConfiguredNetworkHandle, HandleCallsOperationsWithItsPath) {
    onNetworkProperties(reply("v", "a{sv}", 1, "ssid", "s", "\"Home\""));
    const auto network = handle();
    EXPECT_EQ(network->getSsid(), "Home");
    expectAtWork(*network);
}

TEST_F(ConfiguredNetworkHandle, HandleWithoutSsidCanBeUsed) {
    const auto network = handle();
    EXPECT_EQ(network->getSsid(), std::nullopt);
    expectAtWork(*network);
}

TEST_F(ConfiguredNetworkHandle, HandleReturnsFailure) {
    const auto network = handle();
    const Answer broken = errorReply("fi.w1.wpa_supplicant1.NetworkUnknown", "x");
    onInterface("SelectNetwork", broken);
    onInterface("RemoveNetwork", broken);
    supplicant.onSet(networkPath, networkInterface, "Enabled", broken);
    supplicant.onSet(networkPath, networkInterface, "Properties", broken);
    EXPECT_FALSE(onLoop([&] { return network->selectSync(); }));
    EXPECT_FALSE(onLoop([&] { return network->setEnabledSync(true); }));
    EXPECT_FALSE(onLoop([&] { return network->setPrioritySync(1); }));
    EXPECT_FALSE(onLoop([&] { return network->removeSync(); }));
}

TEST_F(ConfiguredNetworkHandle, TwoHandlesOnOneNetworkHaveTheSameId) {
    const auto first = handle();
    const auto second = handle();
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(first->id(), second->id());
}

}  // namespace
}  // namespace kaz::wifi
