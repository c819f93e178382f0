// The supplicant adds and removes interfaces while its unit runs.
#include "unit/communicator/communicator_fixture.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kaz::wifi {
namespace {

const std::string newPath = "/fi/w1/wpa_supplicant1/Interfaces/8";

class Interfaces : public CommunicatorTest {
  protected:
    Interfaces() { supplicant.onGetAll(newPath, interfaceInterface, reply("a{sv}", 0)); }

    void listed(const std::vector<std::string>& paths) {
        supplicant.onGet(rootPath, rootInterface, "Interfaces", [paths](sd_bus_message* call) {
            return paths.empty()       ? reply("v", "ao", 0)(call)
                   : paths.size() == 1 ? reply("v", "ao", 1, paths[0])(call)
                                       : reply("v", "ao", 2, paths[0], paths[1])(call);
        });
    }
    void emitAdded(const std::string& path) {
        supplicant.emit(rootPath, rootInterface, "InterfaceAdded", values("oa{sv}", path, 0));
    }
    void emitAdded(const std::string& path, const std::string& name) {
        supplicant.emit(rootPath, rootInterface, "InterfaceAdded",
                        values("oa{sv}", path, 1, "Ifname", "s", name));
    }
    void emitRemoved(const std::string& path) {
        supplicant.emit(rootPath, rootInterface, "InterfaceRemoved", values("o", path));
    }
    // Afterwards the supplicant has none, and the communicator has noticed it.
    void removeTheOnlyInterface() {
        listed({});
        emitRemoved(interfacePath);
        ASSERT_TRUE(log.waitForText(spdlog::level::err,
                                    "wpa_supplicant has no configured interfaces, can't control wifi"));
        onLoop([] {});
        forget();
    }
    void changeUnitState(const std::string& activeState) {
        onLoop([&] { communicator->connectOrDisconnectFromSupplicantSync(activeState); });
    }

    static std::vector<std::string> attachCalls(const std::string& path) {
        return {getText(rootPath, rootInterface, "Interfaces"), getAllText(path, interfaceInterface),
                "report: nothing", getAllText(networkdPath, networkdInterface), "status changed: on"};
    }
    // The calls since the last take are those of attaching to this interface, and no others.
    void expectAttachedTo(const std::string& path) {
        ASSERT_TRUE(calls.waitForCall("status changed: on"));
        onLoop([] {});
        EXPECT_EQ(takeCalls(), attachCalls(path));
    }
    // The same after the end of another.
    void expectAttachedToAnother(const std::string& path) {
        ASSERT_TRUE(calls.waitForCall("status changed: on"));
        onLoop([] {});
        std::vector<std::string> expected = attachCalls(path);
        expected.insert(expected.begin(), "status changed: off");
        EXPECT_EQ(takeCalls(), expected);
    }
    // Blocks until all signals that the supplicant has emitted are handled, also while detached: the last one cannot
    // be decoded, which the log shows.
    void settleRoot() {
        supplicant.emit(rootPath, rootInterface, "InterfaceRemoved", values("s", "not a path"));
        ASSERT_TRUE(log.waitFor([](const auto& records) {
            return std::any_of(records.begin(), records.end(), [](const LogRecord& record) {
                return record.text.starts_with(decodingFailed);
            });
        }));
    }
};

TEST_F(Interfaces, ReplacedInterfaceIsUsedInsteadOfTheOld) {
    startAttached();
    listed({newPath});
    emitRemoved(interfacePath);
    emitAdded(newPath);
    ASSERT_TRUE(calls.waitForCall("status changed: on"));
    onLoop([] {});
    std::vector<std::string> expected = attachCalls(newPath);
    expected.insert(expected.begin(),
                    {"status changed: off", getText(unitPath, unitInterface, "ActiveState")});
    EXPECT_EQ(takeCalls(), expected);
    supplicant.emit(newPath, interfaceInterface, "ScanDone", values("b", 1));
    EXPECT_TRUE(calls.waitForCall("scanning done: true"));
}

TEST_F(Interfaces, InterfaceThatComesLaterIsAttached) {
    startAttached();
    ASSERT_NO_FATAL_FAILURE(removeTheOnlyInterface());
    listed({newPath});
    emitAdded(newPath);
    expectAttachedTo(newPath);
    EXPECT_TRUE(communicator->isSupplicantOn());
}

// systemd may have no time to answer, and reports nothing more while the unit runs.
TEST_F(Interfaces, InterfaceIsAttachedAlsoWhenTheStateOfTheUnitCouldNotBeRead) {
    startAttached();
    onUnitState(errorReply("org.example.Busy", "busy"));
    emitRemoved(interfacePath);
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    onLoop([] {});
    forget();
    listed({newPath});
    emitAdded(newPath);
    expectAttachedTo(newPath);
}

TEST_F(Interfaces, UnitWithoutInterfaceIsAttachedOnceItHasOne) {
    listed({});
    startAttached();
    listed({interfacePath});
    emitAdded(interfacePath);
    expectAttachedTo(interfacePath);
}

// systemd may report "active" only after the new supplicant has added its interface.
TEST_F(Interfaces, RestartedSupplicantIsAttachedAlsoAfterOneWithoutInterface) {
    listed({});
    startAttached();
    changeUnitState("deactivating");
    changeUnitState("activating");
    listed({newPath});
    emitAdded(newPath);
    settleRoot();
    changeUnitState("active");
    expectAttachedTo(newPath);
}

TEST_F(Interfaces, FurtherInterfacesChangeNothing) {
    startAttached();
    listed({newPath, interfacePath});
    emitAdded(newPath);
    emitRemoved(newPath);
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(takeLog(), IsEmpty());
}

// The supplicant may have listed the interface before its signal arrives.
TEST_F(Interfaces, SignalOfTheInterfaceInUseChangesNothing) {
    onInterfaceProperties(reply("a{sv}", 1, "Ifname", "s", "wlan0"));
    startAttached();
    emitAdded(interfacePath, "wlan0");
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(Interfaces, InterfaceOfAnotherProgramIsNotUsedInPlaceOfTheRemovedOne) {
    onInterfaceProperties(reply("a{sv}", 1, "Ifname", "s", "wlan0"));
    startAttached();
    emitAdded(newPath, "ap0");
    listed({newPath});
    emitRemoved(interfacePath);
    ASSERT_TRUE(log.waitForText(spdlog::level::err,
                                "wpa_supplicant has removed the interface in use, can't control wifi"));
    onLoop([] {});
    EXPECT_THAT(takeCalls(), ElementsAre("status changed: off",
                                         getText(unitPath, unitInterface, "ActiveState"), getInterfaces));
    listed({interfacePath, newPath});
    emitAdded(interfacePath, "wlan0");
    expectAttachedTo(interfacePath);
}

// Both return after a reset, and the one of another program comes first.
TEST_F(Interfaces, InterfaceWithTheFormerNameIsUsedAgain) {
    const std::string returned = interfacePath + '9';
    supplicant.onGetAll(returned, interfaceInterface, reply("a{sv}", 0));
    onInterfaceProperties(reply("a{sv}", 1, "Ifname", "s", "wlan0"));
    startAttached();
    ASSERT_NO_FATAL_FAILURE(removeTheOnlyInterface());
    listed({newPath});
    emitAdded(newPath, "ap0");
    expectAttachedTo(newPath);
    listed({returned, newPath});
    emitAdded(returned, "wlan0");
    expectAttachedToAnother(returned);
}

// Another program adds its interface before the signal of ours is handled.
TEST_F(Interfaces, AddedInterfaceIsAttachedAlsoWhenANewerOneIsListedFirst) {
    startAttached();
    ASSERT_NO_FATAL_FAILURE(removeTheOnlyInterface());
    listed({interfacePath + '9', newPath});
    emitAdded(newPath, "wlan0");
    expectAttachedTo(newPath);
}

TEST_F(Interfaces, InterfaceThatWasListedBeforeTakesThePlaceOfTheRemovedOne) {
    listed({interfacePath, newPath});
    startAttached();
    emitAdded(newPath, "wlan1");  // its signal was waiting
    settle();
    listed({newPath});
    emitRemoved(interfacePath);
    ASSERT_TRUE(calls.waitForCall("status changed: on"));
    EXPECT_THAT(takeCalls(), testing::Contains(getAllText(newPath, interfaceInterface)));
}

// The supplicant takes its name while the first task waits for systemd.
TEST_F(Interfaces, SupplicantThatComesDuringTheStartIsAttachedOnce) {
    supplicant.leave();
    onSystemd("LoadUnit", [this](sd_bus_message* call) {
        supplicant.comeBack();
        return reply("o", unitPath)(call);
    });
    start("active");
    onLoop([] {});
    settle();
    const auto all = takeCalls();
    EXPECT_EQ(std::count(all.begin(), all.end(), "status changed: on"), 1);
    EXPECT_THAT(all, testing::Not(testing::Contains("status changed: off")));
}

// systemd may start a new process without reporting the end of the old one.
TEST_F(Interfaces, AnotherSupplicantUnderTheSameNameIsAttached) {
    startAttached();
    listed({newPath});
    supplicant.leave();
    supplicant.comeBack();
    expectAttachedToAnother(newPath);
}

TEST_F(Interfaces, SupplicantThatIsGoneIsDetachedOnceItsUnitNoLongerRuns) {
    startAttached();
    supplicant.leave();
    onLoop([] {});
    EXPECT_THAT(takeCalls(), IsEmpty());
    changeUnitState("activating");
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    EXPECT_THAT(takeCalls(), ElementsAre("status changed: off"));
    supplicant.comeBack();
    changeUnitState("active");
    expectAttachedTo(interfacePath);
}

TEST_F(Interfaces, SupplicantThatLeavesWhileItsUnitIsStoppedIsDetached) {
    startAttached();
    changeUnitState("deactivating");
    EXPECT_THAT(takeCalls(), IsEmpty());
    supplicant.leave();
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    changeUnitState("inactive");
    EXPECT_THAT(takeCalls(), ElementsAre("status changed: off"));
}

TEST_F(Interfaces, NothingIsAttachedWhileTheUnitDoesNotRun) {
    startDetached();
    emitAdded(interfacePath);
    settleRoot();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_FALSE(communicator->isSupplicantOn());
    changeUnitState("active");
    expectAttachedTo(interfacePath);
}

// A supplicant that ends removes its interface before systemd reports the unit as inactive.
TEST_F(Interfaces, EndingSupplicantIsNotAskedForItsInterfaces) {
    startAttached();
    changeUnitState("deactivating");
    emitRemoved(interfacePath);
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    changeUnitState("inactive");
    EXPECT_THAT(takeCalls(), ElementsAre("status changed: off"));
    EXPECT_THAT(log.texts(spdlog::level::err), IsEmpty());
}

// The supplicant lists its newest interface first.
TEST_F(Interfaces, InterfaceInUseIsKeptAfterTheReturnOfTheBus) {
    startAttached();
    listed({newPath, interfacePath});
    systemd.leave();
    supplicant.leave();
    networkd.leave();
    bus.kill();
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    bus.restart();
    supplicant.comeBack();
    networkd.comeBack();
    systemd.comeBack();
    ASSERT_TRUE(calls.waitForCall("status changed: on"));
    EXPECT_THAT(takeCalls(), testing::Contains(getAllText(interfacePath, interfaceInterface)));
}

}  // namespace
}  // namespace kaz::wifi
