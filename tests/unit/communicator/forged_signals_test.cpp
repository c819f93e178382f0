// Signals that look like a daemon's but come from another program on the bus.
#include "support/bus_peer/bus_peer.h"
#include "unit/communicator/communicator_fixture.h"

#include <ostream>

namespace kaz::wifi {
namespace {

using test::Append;

struct Subscription {
    std::string name;
    std::string service;
    std::string path;
    std::string interface;
    std::string member;
    Append arguments;
    std::string effect;  // of the genuine signal, as the handlers record it
};

void PrintTo(const Subscription& subscription, std::ostream* out) {
    *out << subscription.name;
}

const std::vector<Subscription>& subscriptions() {
    static const std::vector<Subscription> all{
        {"UnitState", "org.freedesktop.systemd1", unitPath, propertiesInterface, "PropertiesChanged",
         values("sa{sv}as", unitInterface, 1, "ActiveState", "s", "inactive", 0), "status changed: off"},
        {"ScanDone", "fi.w1.wpa_supplicant1", interfacePath, interfaceInterface, "ScanDone", values("b", 1),
         "scanning done: true"},
        {"Eap", "fi.w1.wpa_supplicant1", interfacePath, interfaceInterface, "EAP",
         values("ss", "remote certificate verification", "success"),
         "EAP: Status: remote certificate verification, parameter: success"},
        {"NetworkSelected", "fi.w1.wpa_supplicant1", interfacePath, interfaceInterface, "NetworkSelected",
         values("o", networkPath), "network selected: \"Home\""},
        {"NetworkAdded", "fi.w1.wpa_supplicant1", interfacePath, interfaceInterface, "NetworkAdded",
         values("oa{sv}", networkPath, 0), "configured networks changed"},
        {"InterfaceRemoved", "fi.w1.wpa_supplicant1", rootPath, rootInterface, "InterfaceRemoved",
         values("o", interfacePath), "status changed: off"},
        {"InterfaceProperties", "fi.w1.wpa_supplicant1", interfacePath, propertiesInterface,
         "PropertiesChanged", values("sa{sv}as", interfaceInterface, 1, "State", "s", "completed", 0),
         "report: status=Connected"},
        {"OnlineState", "org.freedesktop.network1", networkdPath, propertiesInterface, "PropertiesChanged",
         values("sa{sv}as", networkdInterface, 1, "OnlineState", "s", "online", 0), "networkd online: true"},
    };
    return all;
}

class ForgedSignals : public CommunicatorTest, public testing::WithParamInterface<Subscription> {
  protected:
    ForgedSignals() {
        onNetworkProperties(reply("v", "a{sv}", 1, "ssid", "s", "\"Home\""));
        supplicant.onSet("/who/asks", networkInterface, "Properties", [this](sd_bus_message* call) {
            ourName = sd_bus_message_get_sender(call);
            return reply("")(call);
        });
    }

    const Subscription& subscription() const { return GetParam(); }

    test::ScriptedPeer& genuine() {
        if (subscription().service == "org.freedesktop.systemd1") {
            return systemd;
        }
        return subscription().service == "org.freedesktop.network1" ? networkd : supplicant;
    }

    // Makes a call to a peer, which sees the name of the caller.
    std::string nameOfTheCommunicator() {
        onLoop([this] { communicator->configuredNetworks().setPrioritySync("/who/asks", 1); });
        return ourName;
    }

    bool showsEffect() const {
        const auto seen = calls.calls();
        return std::find(seen.begin(), seen.end(), subscription().effect) != seen.end() ||
               log.contains(subscription().effect);
    }

    void expectNothing(const std::string& destination) {
        forget();
        intruder.emit({subscription().path, subscription().interface, subscription().member},
                      subscription().arguments, destination);
        intruder.settle();
        if (!destination.empty()) {
            EXPECT_TRUE(
                log.waitForText(spdlog::level::debug, "Dropping " + subscription().member + ": sent by "));
        }
        settle();
        EXPECT_FALSE(showsEffect());
        EXPECT_THAT(takeCalls(), IsEmpty());
    }

    void expectEffectOfTheGenuineOne() {
        forget();
        genuine().emit(subscription().path, subscription().interface, subscription().member,
                       subscription().arguments);
        if (subscription().name == "Eap") {  // is only logged
            EXPECT_TRUE(log.waitForText(spdlog::level::debug, subscription().effect));
        } else {
            EXPECT_TRUE(calls.waitForCall(subscription().effect));
        }
    }

    void restartGenuine() {
        genuine().leave();
        settleBus();
        genuine().comeBack();
        settleBus();
    }

    // Blocks until earlier messages of the bus about names are handled.
    void settleBus() {
        onLoop([this] { communicator->configuredNetworks().setPrioritySync("/who/asks", 1); });
        onLoop([] {});
    }

    std::string ourName;
    test::BusPeer intruder;
};

TEST_P(ForgedSignals, ForgedSignalChangesNothingBeforeAndAfterARestartOfTheRealPeer) {
    startAttached();
    const std::string us = nameOfTheCommunicator();
    ASSERT_EQ(us.find(':'), 0U);
    expectNothing(us);
    expectNothing("");

    restartGenuine();
    expectNothing(us);
    expectNothing("");

    // The subscription still works.
    expectEffectOfTheGenuineOne();
}

INSTANTIATE_TEST_SUITE_P(OfEverySubscription, ForgedSignals, testing::ValuesIn(subscriptions()),
                         [](const auto& subscription) { return subscription.param.name; });

}  // namespace
}  // namespace kaz::wifi
