#include "unit/manager/engine_fixture.h"

#include "diagnostics/connection_info_text.h"

#include <ostream>
#include <utility>

namespace kaz::test {

std::ostream& operator<<(std::ostream& out, const Callbacks& callbacks) {
    return out << "enabled " << callbacks.enabled << ", networks " << callbacks.networks << ", scanning "
               << callbacks.scanning << ", connection " << callbacks.connection;
}

ConnectionSettings settingsFor(const std::string& ssid, SecurityMode mode) {
    ConnectionSettings settings;
    settings.ssid = ssid;
    settings.securityMode = mode;
    settings.password = mode == SecurityMode::wep ? "12345" : "correct horse";
    return settings;
}

EngineTest::EngineTest() {
    takeGaugeCreations();
    takeGaugeReports();
}

// The engine's destructor runs a last idle pass. What the callbacks captured no longer exists then.
EngineTest::~EngineTest() {
    stack->onCall = nullptr;
    if (engine) {
        engine->onEnabledChanged(nullptr);
        engine->onNetworksListChanged(nullptr);
        engine->onScanningChanged(nullptr);
        engine->onConnectionInfoChanged(nullptr);
    }
}

void EngineTest::construct() {
    auto owned = std::make_unique<FakeCommunicator>(stack);
    communicator = owned.get();
    engine = std::make_unique<wifi::ManagerImpl>(std::move(owned), clock);
}

void EngineTest::start() {
    construct();
    engine->onEnabledChanged([this] { ++callbacks_.enabled; });
    engine->onNetworksListChanged([this] { ++callbacks_.networks; });
    engine->onScanningChanged([this] { ++callbacks_.scanning; });
    engine->onConnectionInfoChanged([this] { ++callbacks_.connection; });
    runUntilIdle();
    forget();
}

void EngineTest::startWithSupplicant() {
    start();
    attachSupplicant();
    runUntilIdle();
    forget();
}

std::optional<std::chrono::milliseconds> EngineTest::runUntilIdle() {
    communicator->runTasks();
    return communicator->runIdlePass();
}

void EngineTest::attachSupplicant() {
    stack->supplicantOn = true;
    communicator->wifiServiceStatusChangeHandler();
}

void EngineTest::detachSupplicant() {
    stack->supplicantOn = false;
    communicator->wifiServiceStatusChangeHandler();
}

void EngineTest::reportStatus(SupplicantStatus status) {
    SupplicantReport change;
    change.status = status;
    report(change);
}

void EngineTest::reportBss(const std::string& ssid, int signal) {
    SupplicantReport change;
    change.currentBssChange = PropertyChange::Set;
    change.currentBss = {ssid, signal, SecurityMode::rsnPsk};
    report(change);
}

void EngineTest::reportBssList(std::vector<Bss> list) {
    SupplicantReport change;
    change.bssListChange = PropertyChange::Set;
    change.bssList = std::move(list);
    report(change);
}

void EngineTest::reportScanning(bool scanning) {
    SupplicantReport change;
    change.scanning = scanning;
    report(change);
}

void EngineTest::reportLinkUp(const std::string& ssid) {
    reportBss(ssid);
    reportStatus(SupplicantStatus::Connected);
}

void EngineTest::becomeConnected(const std::string& ssid) {
    reportOnline(true);
    reportLinkUp(ssid);
    runUntilIdle();
    clock->advance(std::chrono::seconds(1));
    ASSERT_EQ(engine->connectionInfo().status, ConnectionInfo::Status::connected);
    forget();
}

void EngineTest::connectTo(const std::string& ssid) {
    EXPECT_EQ(engine->connect(settingsFor(ssid)), ConnectResult::ok);
    runUntilIdle();
}

void EngineTest::selectNetwork(const std::string& ssid) {
    communicator->networkSelectedHandler(ssid);
    runUntilIdle();
    forget();
}

Calls EngineTest::callsUntilIdle() {
    takeCalls();
    runUntilIdle();
    return takeCalls();
}

Callbacks EngineTest::takeCallbacks() {
    return std::exchange(callbacks_, {});
}

void EngineTest::forget() {
    takeCalls();
    takeCallbacks();
    takeGaugeReports();
    log.clear();
}

std::string EngineTest::state() const {
    return wifi::toText(engine->connectionInfo());
}

}  // namespace kaz::test
