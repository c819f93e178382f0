// How the engine handles the supplicant's property reports.
#include "unit/manager/engine_fixture.h"

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class ScanningReport : public EngineWithSupplicant {};

class Report : public EngineWithSupplicant {};

TEST_F(ScanningReport, ScanningIsPublishedAtOnceWithOneCallbackPerChange) {
    bool seen = false;
    engine->onScanningChanged([&] { seen = engine->isScanning(); });
    reportScanning(true);
    EXPECT_TRUE(engine->isScanning());
    EXPECT_TRUE(seen);
    reportScanning(false);
    EXPECT_FALSE(engine->isScanning());
    EXPECT_FALSE(seen);
}

TEST_F(ScanningReport, RepeatedScanningReportInvokesNoCallback) {
    reportScanning(false);
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    reportScanning(true);
    reportScanning(true);
    EXPECT_EQ(takeCallbacks(), Callbacks{.scanning = 1});
    reportScanning(false);
    reportScanning(false);
    EXPECT_EQ(takeCallbacks(), Callbacks{.scanning = 1});
}

TEST_F(ScanningReport, ScanningAfterADetachIsAChange) {
    reportScanning(true);
    detachSupplicant();
    forget();
    reportScanning(true);
    EXPECT_EQ(takeCallbacks(), Callbacks{.scanning = 1});
}

TEST_F(ScanningReport, ScanningReachesTheTracker) {
    engine->connectConfigured("Home");
    EXPECT_EQ(runUntilIdle(), 2000ms);
    reportScanning(true);
    EXPECT_EQ(runUntilIdle(), std::nullopt);
}

TEST_F(Report, EmptyReportHasNoEffect) {
    becomeConnected("Home");
    SupplicantReport empty;
    empty.bssList = {{"Cafe", -50, SecurityMode::none}};
    empty.currentNetworkSsid = "Cafe";
    empty.currentBss = {"Cafe", -60, SecurityMode::none};
    report(empty);
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
    EXPECT_TRUE(engine->networks().empty());
    EXPECT_EQ(takeCallbacks(), Callbacks{});
    EXPECT_EQ(takeCalls(), Calls{});
}

TEST_F(Report, CurrentNetworkBeginsAnAttempt) {
    SupplicantReport selected;
    selected.currentNetworkChange = PropertyChange::Set;
    selected.currentNetworkSsid = "Home";
    report(selected);
    EXPECT_EQ(runUntilIdle(), 2000ms);
    EXPECT_EQ(state(), R"(status=connectingWifi, ssid="Home")");
}

TEST_F(Report, ClearedCurrentNetworkIsIgnored) {
    becomeConnected("Home");
    SupplicantReport cleared;
    cleared.currentNetworkChange = PropertyChange::Cleared;
    report(cleared);
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
}

TEST_F(Report, CurrentBssMovesTheConnectionToIt) {
    becomeConnected("Home");
    reportBss("Home", -44);
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-44)");
}

TEST_F(Report, ClearedCurrentBssRemovesTheBss) {
    becomeConnected("Home");
    SupplicantReport cleared;
    cleared.currentBssChange = PropertyChange::Cleared;
    cleared.currentBss = {"Cafe", -60, SecurityMode::none};
    report(cleared);
    stack->signalPoll = -33;
    communicator->expireTimer();
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)")
        << "there is no BSS to have the signal";
}

TEST_F(Report, CombinedReportAppliesNetworkThenBssThenStatus) {
    clock->tickWithEveryReading();
    becomeConnected("Home");
    engine->connectConfigured("Office");
    runUntilIdle();
    forget();
    SupplicantReport all;
    all.scanning = true;
    all.bssListChange = PropertyChange::Set;
    all.bssList = {{"Cafe", -60, SecurityMode::none}, {"Home", -50, SecurityMode::none}};
    all.currentNetworkChange = PropertyChange::Set;
    all.currentNetworkSsid = "Cafe";
    all.currentBssChange = PropertyChange::Set;
    all.currentBss = {"Cafe", -60, SecurityMode::none};
    all.status = SupplicantStatus::Connected;
    report(all);
    EXPECT_TRUE(engine->isScanning());
    EXPECT_EQ(runUntilIdle(), std::nullopt);
    EXPECT_EQ(state(), R"(status=connected, ssid="Cafe", signal=-60)");
    EXPECT_TRUE(log.texts(spdlog::level::warn).empty())
        << "the new attempt succeeded, the old one was replaced";
    EXPECT_EQ(engine->networks(), (std::vector<WifiNetwork>{{"Home", -50, SecurityMode::none, false}}));
}

TEST_F(Report, EndOfScanRestartsTheTimeoutBeforeTheStatusCounts) {
    clock->tickWithEveryReading();
    reportScanning(true);
    engine->connectConfigured("Home");
    runUntilIdle();
    SupplicantReport done;
    done.scanning = false;
    done.currentBssChange = PropertyChange::Set;
    done.currentBss = {"Home", -60, SecurityMode::none};
    done.status = SupplicantStatus::Connected;
    report(done);
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connectingIP, ssid="Home", signal=-60)")
        << "the link is newer than the scan's end";
}

TEST_F(Report, NetworkdOnlineTurnsTheLinkIntoAConnection) {
    reportLinkUp("Home");
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connectingIP, ssid="Home", signal=-50)");
    reportOnline(true);
    runUntilIdle();
    EXPECT_EQ(state(), R"(status=connected, ssid="Home", signal=-50)");
}

}  // namespace
}  // namespace kaz::test
