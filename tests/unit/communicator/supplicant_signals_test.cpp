// ScanDone, EAP and NetworkSelected.
#include "unit/communicator/communicator_fixture.h"

namespace kaz::wifi {
namespace {

const std::string undecodable = decodingFailed + noSuchType;
const std::string scanEnded = "PropertiesChanged: Scanning=false (via ScanDone)";

class SupplicantSignals : public CommunicatorTest {
  protected:
    // The supplicant selects the network.
    void selectNetwork() {
        startAttached();
        emitFromInterface("NetworkSelected", "o", networkPath);
        settle();
    }
};

TEST_F(SupplicantSignals, ScanDoneReportsItsSuccessAndThenTheEndOfTheScan) {
    startAttached();
    emitFromInterface("ScanDone", "b", 1);
    emitFromInterface("ScanDone", "b", 0);
    settle();
    EXPECT_THAT(takeCalls(), ElementsAre("scanning done: true", "report: scanning=false",
                                         "scanning done: false", "report: scanning=false"));
    EXPECT_THAT(takeLog(), ElementsAre(debug(scanEnded), debug(scanEnded)));
}

TEST_F(SupplicantSignals, UndecodableScanDoneReportsAFailedScan) {
    startAttached();
    emitFromInterface("ScanDone", "s", "true");
    emitFromInterface("ScanDone", "");
    settle();
    EXPECT_THAT(takeCalls(), ElementsAre("scanning done: false", "report: scanning=false",
                                         "scanning done: false", "report: scanning=false"));
    EXPECT_THAT(takeLog(),
                ElementsAre(warning(undecodable), debug(scanEnded), warning(undecodable), debug(scanEnded)));
}

TEST_F(SupplicantSignals, ScanDoneCallsItsHandlersAroundTheLogRecord) {
    std::vector<std::size_t> recordsAtCall;
    communicator->scanningDoneHandler = [&](bool) { recordsAtCall.push_back(log.records().size()); };
    communicator->supplicantPropertiesHandler = [&](const auto&) {
        recordsAtCall.push_back(log.records().size());
    };
    startAttached();
    recordsAtCall.clear();
    emitFromInterface("ScanDone", "b", 1);
    settle();
    EXPECT_THAT(recordsAtCall, ElementsAre(0U, 1U));
}

TEST_F(SupplicantSignals, EapIsLoggedAndReportsNoChange) {
    startAttached();
    emitFromInterface("EAP", "ss", "started", "");
    emitFromInterface("EAP", "ss", "accept proposed method", "PEAP");
    emitFromInterface("EAP", "ss", "", "x");
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(takeLog(), ElementsAre(debug("EAP: Status: started, parameter: <empty>"),
                                       debug("EAP: Status: accept proposed method, parameter: PEAP"),
                                       debug("EAP: Status: , parameter: x")));
}

TEST_F(SupplicantSignals, UndecodableEapIsLoggedOnlyAsUndecodable) {
    startAttached();
    emitFromInterface("EAP", "is", 1, "x");
    emitFromInterface("EAP", "s", "started");
    emitFromInterface("EAP", "");
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(takeLog(), ElementsAre(warning(undecodable), warning(undecodable), warning(undecodable)));
}

TEST_F(SupplicantSignals, NetworkSelectedReportsTheSsid) {
    onNetworkProperties(reply("v", "a{sv}", 1, "ssid", "s", "\"Home\""));
    selectNetwork();
    EXPECT_THAT(takeCalls(), ElementsAre(getNetworkProperties, "network selected: \"Home\""));
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(SupplicantSignals, NetworkSelectedWithUnreadableSsidReportsNoSsid) {
    onNetworkProperties(reply("v", "a{sv}", 0));
    selectNetwork();
    EXPECT_THAT(takeCalls(), ElementsAre(getNetworkProperties, "network selected: unknown"));
    EXPECT_THAT(takeLog(), ElementsAre(warning("Couldn't get SSID for " + networkPath + ", no value set."),
                                       error("NetworkSelected " + networkPath + ", but couldn't get SSID")));
}

TEST_F(SupplicantSignals, NetworkSelectedForAGoneNetworkReportsNoSsid) {
    selectNetwork();
    EXPECT_THAT(takeCalls(), ElementsAre(getNetworkProperties, "network selected: unknown"));
    EXPECT_THAT(log.texts(spdlog::level::err),
                ElementsAre("NetworkSelected " + networkPath + ", but couldn't get SSID"));
}

TEST_F(SupplicantSignals, NetworkSelectedWithoutAPathReportsNothing) {
    startAttached();
    emitFromInterface("NetworkSelected", "s", networkPath);
    emitFromInterface("NetworkSelected", "");
    settle();
    EXPECT_THAT(takeCalls(), IsEmpty());
    const auto pathless = warning("Got NetworkSelected without object path");
    EXPECT_THAT(takeLog(), ElementsAre(warning(undecodable), pathless, warning(undecodable), pathless));
}

TEST_F(SupplicantSignals, SignalsBeforeTheHandlersAreAssignedAreIgnored) {
    communicator = std::make_unique<DbusCommunicator>();
    onNetworkProperties(reply("v", "a{sv}", 1, "ssid", "s", "\"Home\""));
    startAttached();
    emitFromInterface("ScanDone", "b", 1);
    emitFromInterface("NetworkSelected", "o", networkPath);
    emitPropertiesChanged(1, "State", "s", "completed");
    settle();
    EXPECT_THAT(takeCalls(), ElementsAre(getNetworkProperties));
    EXPECT_THAT(takeLog(), ElementsAre(debug(scanEnded), debug("PropertiesChanged: State=completed")));
}

}  // namespace
}  // namespace kaz::wifi
