// The bus or systemd disappears and comes back.
#include "unit/communicator/communicator_fixture.h"

#include <spdlog/sinks/callback_sink.h>
#include <spdlog/spdlog.h>

#include <atomic>
#include <memory>
#include <string_view>

namespace kaz::wifi {
namespace {

class BusLoss : public CommunicatorTest {
  protected:
    void loseBus() {
        systemd.leave();
        supplicant.leave();
        networkd.leave();
        bus.kill();
    }

    // Systemd last, because the communicator calls the others as soon as it reports an active unit.
    void bringBusBack() {
        bus.restart();
        supplicant.comeBack();
        networkd.comeBack();
        systemd.comeBack();
    }

    void attachAndLoseBus() {
        startAttached();
        loseBus();
        ASSERT_TRUE(calls.waitForCall("status changed: off"));
    }

    void bringBusBackAndAttach(const std::string& status) {
        bringBusBack();
        ASSERT_TRUE(calls.waitForCall("status changed: " + status));
    }

    // Notes for each attach whether the supplicant survived.
    void noteSurvival() {
        communicator->wifiServiceStatusChangeHandler = [this] {
            const bool on = communicator->isSupplicantOn();
            const char* const attached = communicator->supplicantSurvived() ? "on, survived" : "on, new";
            calls.add(std::string("status changed: ") + (on ? attached : "off"));
        };
    }

    std::vector<std::string> statusChanges() {
        std::vector<std::string> changes;
        for (const std::string& call : calls.calls()) {
            if (call.rfind("status changed", 0) == 0) {
                changes.push_back(call);
            }
        }
        return changes;
    }
};

TEST_F(BusLoss, LostBusDetachesOnceAndItsReturnAttachesOnce) {
    attachAndLoseBus();
    EXPECT_FALSE(communicator->isSupplicantOn());
    bringBusBackAndAttach("on");
    onLoop([] {});
    EXPECT_THAT(statusChanges(), ElementsAre("status changed: off", "status changed: on"));
    EXPECT_THAT(calls.calls(), testing::IsSupersetOf({getUnitState, getInterfaces, getInterfaceProperties,
                                                      getNetworkdProperties}));
}

TEST_F(BusLoss, SignalAfterTheReturnOfTheBusIsReportedOnce) {
    attachAndLoseBus();
    bringBusBackAndAttach("on");
    settle();
    forget();
    emitFromInterface("ScanDone", "b", 1);
    emitOnlineState("online");
    settle();
    ASSERT_TRUE(calls.waitForCall("networkd online: true"));
    emitUnitState("inactive");
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    onLoop([] {});
    std::vector<std::string> heard = takeCalls();
    std::sort(heard.begin(), heard.end());
    EXPECT_THAT(heard, ElementsAre("networkd online: true", "report: scanning=false", "scanning done: true",
                                   "status changed: off"));
}

TEST_F(BusLoss, SupplicantThatWasNotReportedStoppedSurvivesTheLossOfTheBus) {
    noteSurvival();
    attachAndLoseBus();
    bringBusBackAndAttach("on, survived");
}

TEST_F(BusLoss, SupplicantStartedAfterASurvivedLossIsNew) {
    noteSurvival();
    attachAndLoseBus();
    bringBusBackAndAttach("on, survived");
    settle();
    emitUnitState("inactive");
    emitUnitState("active");
    ASSERT_TRUE(calls.waitForCall("status changed: on, new"));
}

// Its networks went with the interface.
TEST_F(BusLoss, SupplicantWhoseInterfaceComesBackAfterASurvivedLossIsNew) {
    noteSurvival();
    attachAndLoseBus();
    bringBusBackAndAttach("on, survived");
    settle();
    supplicant.emit(rootPath, rootInterface, "InterfaceRemoved", values("o", interfacePath));
    ASSERT_TRUE(calls.waitForCall("status changed: on, new"));
}

TEST_F(BusLoss, SupplicantThatStoppedBeforeTheLossIsNew) {
    noteSurvival();
    startAttached();
    emitUnitState("inactive");
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    loseBus();
    ASSERT_TRUE(log.waitForText(spdlog::level::err, "Lost the connection to the system bus"));
    bringBusBackAndAttach("on, new");
}

TEST_F(BusLoss, SupplicantThatStoppedDuringTheLossIsNew) {
    noteSurvival();
    attachAndLoseBus();
    onUnitState(reply("v", "s", "inactive"));
    bringBusBack();
    ASSERT_TRUE(calls.waitForCall(getUnitState));
    onLoop([] {});
    emitUnitState("active");
    ASSERT_TRUE(calls.waitForCall("status changed: on, new"));
}

TEST_F(BusLoss, SupplicantThatLeftBeforeTheLossAndIsBackIsNotTakenForGone) {
    startAttached();
    supplicant.leave();
    // After a call through the bus its report of the owner is there, too.
    onLoop([this] { communicator->configuredNetworks().setPrioritySync(networkPath, 1); });
    onLoop([] {});
    loseBus();
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    bringBusBackAndAttach("on");
    onLoop([this] { communicator->connectOrDisconnectFromSupplicantSync("deactivating"); });
    EXPECT_TRUE(communicator->isSupplicantOn());
}

TEST_F(BusLoss, LossOfTheBusWhileDetachedIsNotReported) {
    startDetached();
    loseBus();
    ASSERT_TRUE(log.waitForText(spdlog::level::err, "Lost the connection to the system bus"));
    onLoop([] {});
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(BusLoss, OperationsFailWithoutABus) {
    attachAndLoseBus();
    onLoop([&] {
        EXPECT_FALSE(communicator->scanSync());
        EXPECT_FALSE(communicator->startStopSupplicantSync(true));
    });
}

TEST_F(BusLoss, BusThatStartsLateAttaches) {
    loseBus();
    start("active");
    EXPECT_FALSE(communicator->isSupplicantOn());
    bringBusBackAndAttach("on");
    emitUnitState("inactive");
    EXPECT_TRUE(calls.waitForCall("status changed: off"));
}

TEST_F(BusLoss, SystemdThatStartsLateAttaches) {
    systemd.leave();
    start("active");
    EXPECT_FALSE(communicator->isSupplicantOn());
    systemd.comeBack();
    EXPECT_TRUE(calls.waitForCall("status changed: on"));
}

TEST_F(BusLoss, SystemdThatStartsRightAfterTheFailedCallAttaches) {
    systemd.leave();
    // The sink may see a record after the end of the test.
    const auto missed = std::make_shared<std::atomic<bool>>(false);
    spdlog::default_logger()->sinks().push_back(std::make_shared<spdlog::sinks::callback_sink_st>(
        [this, missed](const spdlog::details::log_msg& record) {
            const std::string_view text(record.payload.data(), record.payload.size());
            if (text.starts_with("Call of LoadUnit at ") && !missed->exchange(true)) {
                systemd.comeBack();
            }
        }));
    start("active");
    EXPECT_TRUE(*missed);
    EXPECT_TRUE(calls.waitForCall("status changed: on"));
}

TEST_F(BusLoss, RestartedSystemdIsAskedForSignalsAndTheStateOfTheUnit) {
    startAttached();
    systemd.leave();
    onUnitState(reply("v", "s", "failed"));
    systemd.comeBack();
    ASSERT_TRUE(calls.waitForCall("status changed: off"));
    EXPECT_THAT(calls.calls(), ElementsAre(callLoadUnit, callSubscribe, getUnitState, "status changed: off"));
}

TEST_F(BusLoss, LossOfSystemdAloneChangesNothing) {
    startAttached();
    systemd.leave();
    settle();
    onLoop([] {});
    EXPECT_TRUE(communicator->isSupplicantOn());
    EXPECT_THAT(takeCalls(), IsEmpty());
}

}  // namespace
}  // namespace kaz::wifi
