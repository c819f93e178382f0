// Attaching and detaching by the state of the supplicant's unit.
#include "unit/communicator/communicator_fixture.h"

#include <atomic>

namespace kaz::wifi {
namespace {

class Attachment : public CommunicatorTest {
  protected:
    void changeUnitState(const std::string& activeState) {
        onLoop([&] { communicator->connectOrDisconnectFromSupplicantSync(activeState); });
    }

    const std::vector<std::string> attachCalls{getInterfaces, getInterfaceProperties, "report: nothing",
                                               getNetworkdProperties, "status changed: on"};
};

TEST_F(Attachment, StartWithActiveUnitAttachesInThisOrder) {
    start("active");
    EXPECT_THAT(calls.calls(),
                ElementsAre(callLoadUnit, callSubscribe, getUnitState, getInterfaces, getInterfaceProperties,
                            "report: nothing", getNetworkdProperties, "status changed: on"));
    EXPECT_THAT(log.records(),
                ElementsAre(debug("Dbus path of wpa_supplicant within systemd daemon is " + unitPath),
                            debug("wpa_supplicant has 1 interfaces"), debug("wpa_supplicant is running")));
    EXPECT_TRUE(communicator->isSupplicantOn());
}

TEST_F(Attachment, AttachReportsTheInitialProperties) {
    onInterfaceProperties(
        reply("a{sv}", 3, "Ifname", "s", "wlan0", "State", "s", "completed", "Scanning", "b", 1));
    onNetworkd(reply("a{sv}", 2, "AddressState", "s", "routable", "OnlineState", "s", "online"));
    start("active");
    calls.waitForCall("status changed");
    const auto all = calls.calls();
    EXPECT_THAT(std::vector<std::string>(all.end() - 5, all.end()),
                ElementsAre(getInterfaceProperties, "report: scanning=true status=Connected",
                            getNetworkdProperties, "networkd online: true", "status changed: on"));
    EXPECT_THAT(log.texts(spdlog::level::debug),
                testing::IsSupersetOf({"PropertiesChanged: Scanning=true",
                                       "PropertiesChanged: State=completed", "OnlineState=online"}));
}

TEST_F(Attachment, SupplicantIsAttachedBeforeTheFirstCallToIt) {
    std::atomic<bool> onMeanwhile = false;
    onInterfaces([&](sd_bus_message* call) {
        onMeanwhile = communicator->isSupplicantOn();
        return reply("v", "ao", 1, interfacePath)(call);
    });
    start("active");
    EXPECT_TRUE(onMeanwhile);
}

TEST_F(Attachment, UnitActiveTwiceAttachesOnce) {
    startDetached();
    changeUnitState("active");
    EXPECT_EQ(takeCalls(), attachCalls);
    changeUnitState("active");
    changeUnitState("reloading");
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_TRUE(communicator->isSupplicantOn());
}

TEST_F(Attachment, ReloadingUnitAttaches) {
    start("reloading");
    EXPECT_TRUE(communicator->isSupplicantOn());
    EXPECT_TRUE(calls.waitForCall("status changed: on"));
}

TEST_F(Attachment, OtherStatesOfTheUnitChangeNothing) {
    startDetached();
    for (const char* state : {"activating", "deactivating", "maintenance", "refreshing", "", "Active",
                              "active ", "ACTIVE", "running"}) {
        changeUnitState(state);
        EXPECT_FALSE(communicator->isSupplicantOn()) << state;
        EXPECT_THAT(takeCalls(), IsEmpty()) << state;
    }
    changeUnitState("active");
    takeCalls();
    for (const char* state :
         {"activating", "deactivating", "maintenance", "", "Failed", "inactive ", "dead"}) {
        changeUnitState(state);
        EXPECT_TRUE(communicator->isSupplicantOn()) << state;
        EXPECT_THAT(takeCalls(), IsEmpty()) << state;
    }
}

TEST_F(Attachment, InactiveOrFailedUnitDetaches) {
    startDetached();
    for (const char* state : {"inactive", "failed"}) {
        changeUnitState("active");
        takeCalls();
        takeLog();
        changeUnitState(state);
        EXPECT_FALSE(communicator->isSupplicantOn()) << state;
        EXPECT_THAT(takeCalls(), ElementsAre("status changed: off")) << state;
        EXPECT_THAT(takeLog(), ElementsAre(debug("wpa_supplicant is stopped"))) << state;
    }
}

TEST_F(Attachment, AttachAndDetachCallTheStatusHandlerBeforeTheLogRecord) {
    std::vector<std::vector<std::string>> loggedBefore;
    communicator->wifiServiceStatusChangeHandler = [&] { loggedBefore.push_back(log.texts()); };
    startDetached();
    changeUnitState("active");
    changeUnitState("inactive");
    EXPECT_THAT(loggedBefore,
                ElementsAre(ElementsAre("wpa_supplicant has 1 interfaces"),
                            ElementsAre("wpa_supplicant has 1 interfaces", "wpa_supplicant is running")));
    EXPECT_EQ(log.texts().back(), "wpa_supplicant is stopped");
}

TEST_F(Attachment, UnitThatEndsTwiceDetachesOnce) {
    startDetached();
    changeUnitState("inactive");
    changeUnitState("failed");
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(Attachment, UnitThatIsActiveAgainAttachesAgain) {
    startAttached();
    changeUnitState("inactive");
    takeCalls();
    changeUnitState("active");
    EXPECT_EQ(takeCalls(), attachCalls);
    emitFromInterface("ScanDone", "b", 1);
    settle();
    EXPECT_THAT(takeCalls(), ElementsAre("scanning done: true", "report: scanning=false"));
}

TEST_F(Attachment, AttachUsesOnlyTheFirstOfTwoInterfaces) {
    onInterfaces(reply("v", "ao", 2, interfacePath, "/fi/w1/wpa_supplicant1/Interfaces/1"));
    start("active");
    EXPECT_TRUE(log.contains("wpa_supplicant has 2 interfaces"));
    EXPECT_THAT(calls.calls(), testing::Contains(getInterfaceProperties));
    EXPECT_THAT(calls.calls(), testing::Not(testing::Contains(testing::HasSubstr("Interfaces/1"))));
    forget();
    supplicant.emit("/fi/w1/wpa_supplicant1/Interfaces/1", interfaceInterface, "ScanDone", values("b", 1));
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(Attachment, SupplicantWithoutInterfaceIsAttachedWithOneErrorAndNoHandlerCall) {
    onInterfaces(reply("v", "ao", 0));
    startDetached();
    changeUnitState("active");
    changeUnitState("active");
    EXPECT_TRUE(communicator->isSupplicantOn());
    EXPECT_THAT(takeCalls(), ElementsAre(getInterfaces));
    EXPECT_THAT(takeLog(),
                ElementsAre(debug("wpa_supplicant has 0 interfaces"),
                            error("wpa_supplicant has no configured interfaces, can't control wifi")));
}

TEST_F(Attachment, SupplicantWithoutInterfaceFailsOperationsWithoutARecord) {
    onInterfaces(reply("v", "ao", 0));
    startAttached();
    EXPECT_FALSE(onLoop([&] { return communicator->scanSync(); }));
    EXPECT_FALSE(onLoop([&] { return communicator->disconnectSync(); }));
    EXPECT_EQ(onLoop([&] { return communicator->signalPollSync(); }), std::nullopt);
    EXPECT_EQ(onLoop([&] { return communicator->addNetworkSync({}, {}); }), nullptr);
    EXPECT_THAT(onLoop([&] { return communicator->getAllConfiguredNetworksSync(); }), IsEmpty());
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(Attachment, SupplicantWithoutInterfaceDoesNotUseTheFormerInterface) {
    startAttached();
    changeUnitState("inactive");
    onInterfaces(reply("v", "ao", 0));
    changeUnitState("active");
    ASSERT_TRUE(communicator->isSupplicantOn());
    takeCalls();
    onInterface("Scan", reply(""));
    EXPECT_FALSE(onLoop([&] { return communicator->scanSync(); }));
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(Attachment, SupplicantWithoutInterfaceAttachesToOneOnlyAfterADetach) {
    onInterfaces(reply("v", "ao", 0));
    startAttached();
    onInterfaces(reply("v", "ao", 1, interfacePath));
    for (const char* state : {"reloading", "activating", "active"}) {
        changeUnitState(state);
    }
    EXPECT_THAT(takeCalls(), IsEmpty());
    changeUnitState("failed");
    EXPECT_FALSE(communicator->isSupplicantOn());
    EXPECT_THAT(takeCalls(), ElementsAre("status changed: off"));
    changeUnitState("active");
    EXPECT_EQ(takeCalls(), attachCalls);
}

TEST_F(Attachment, MissingOrUndecodableInterfaceListCountsAsEmpty) {
    startDetached();
    const std::vector<std::pair<Answer, std::size_t>> answersAndWarnings{
        {errorReply("fi.w1.wpa_supplicant1.UnknownError", "x"), 1}, {reply("v", "as", 1, "/x"), 1}};
    for (const auto& [answer, warnings] : answersAndWarnings) {
        onInterfaces(answer);
        changeUnitState("active");
        EXPECT_TRUE(communicator->isSupplicantOn());
        EXPECT_THAT(takeCalls(), ElementsAre(getInterfaces));
        EXPECT_EQ(log.texts(spdlog::level::warn).size(), warnings);
        EXPECT_THAT(log.texts(spdlog::level::err),
                    ElementsAre("wpa_supplicant has no configured interfaces, can't control wifi"));
        changeUnitState("inactive");
        forget();
    }
}

TEST_F(Attachment, AttachContinuesWithoutTheInitialProperties) {
    onInterfaceProperties(errorReply("fi.w1.wpa_supplicant1.UnknownError", "x"));
    onNetworkd(errorReply("org.freedesktop.DBus.Error.Failed", "x"));
    startDetached();
    changeUnitState("active");
    EXPECT_THAT(takeCalls(), ElementsAre(getInterfaces, getInterfaceProperties, getNetworkdProperties,
                                         "status changed: on"));
    EXPECT_THAT(log.texts(spdlog::level::err), IsEmpty());
}

TEST_F(Attachment, AttachLogsUndecodableInitialPropertiesAndContinues) {
    onInterfaceProperties(reply("a{sv}", 1, "State", "i", 1));
    onNetworkd(reply("a{sv}", 1, "OnlineState", "i", 1));
    startDetached();
    changeUnitState("active");
    EXPECT_THAT(takeCalls(), ElementsAre(getInterfaces, getInterfaceProperties, getNetworkdProperties,
                                         "status changed: on"));
    EXPECT_THAT(takeLog(),
                ElementsAre(debug("wpa_supplicant has 1 interfaces"), warning(decodingFailed + noSuchValue),
                            error("Couldn't decode wpa_supplicant PropertiesChanged (" + noSuchValue + ")"),
                            warning(decodingFailed + noSuchValue), debug("wpa_supplicant is running")));
}

TEST_F(Attachment, SignalsOfSupplicantAndNetworkdAreIgnoredAfterADetach) {
    startAttached();
    changeUnitState("inactive");
    // The bus handles calls of one sender in order, so after this reply it has dropped the match rules.
    onLoop([&] { communicator->eapMethodsSync(); });
    takeCalls();
    emitFromInterface("ScanDone", "b", 1);
    emitPropertiesChanged(1, "State", "s", "completed");
    emitOnlineState("online");
    // The signals would arrive before these replies.
    changeUnitState("active");
    settle();
    EXPECT_EQ(takeCalls(), attachCalls);
}

TEST_F(Attachment, ReplacedSupplicantIsAttachedWithItsSignals) {
    startAttached();
    supplicant.leave();
    emitUnitState("failed");
    EXPECT_TRUE(calls.waitForCall("status changed: off"));
    supplicant.comeBack();
    emitUnitState("active");
    EXPECT_TRUE(calls.waitForCall("status changed: on"));
    forget();
    emitFromInterface("ScanDone", "b", 0);
    settle();
    EXPECT_THAT(takeCalls(), ElementsAre("scanning done: false", "report: scanning=false"));
}

TEST_F(Attachment, ClearedStatusHandlerThrowsOnTheLoopThread) {
    communicator->wifiServiceStatusChangeHandler = nullptr;
    startDetached();
    EXPECT_THROW(changeUnitState("active"), std::bad_function_call);
    EXPECT_TRUE(communicator->isSupplicantOn());
    EXPECT_THROW(changeUnitState("inactive"), std::bad_function_call);
    EXPECT_FALSE(communicator->isSupplicantOn());
}

}  // namespace
}  // namespace kaz::wifi
