// Manager forwards every operation to the engine's operation of the same name.
#include "doubles/fake_communicator/fake_communicator.h"
#include "doubles/fake_communicator/fake_wifi_stack.h"
#include "doubles/recording_log/recording_log.h"

#include <wifi/manager.h>

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace kaz::test {
namespace {

// What the next createCommunicator() returns.
std::unique_ptr<FakeCommunicator>& nextCommunicator() {
    static std::unique_ptr<FakeCommunicator> next;
    return next;
}

}  // namespace
}  // namespace kaz::test

// Replaces the factory of the communicator for the system bus.
std::unique_ptr<kaz::wifi::Communicator> kaz::wifi::createCommunicator() {
    return std::move(test::nextCommunicator());
}

namespace kaz::test {
namespace {

using wifi::Communicator;
using wifi::ConnectionInfo;
using wifi::ConnectResult;
using wifi::SecurityMode;
using Calls = std::vector<std::string>;

class Manager : public ::testing::Test {
  protected:
    Manager() {
        stack->supplicantOn = true;
        stack->eapMethods = {"PEAP", "TLS"};
        nextCommunicator() = std::make_unique<FakeCommunicator>(stack);
        communicator = nextCommunicator().get();
        manager = std::make_unique<wifi::Manager>();
        communicator->wifiServiceStatusChangeHandler();
        runUntilIdle();
        stack->takeCalls();
    }

    // The callbacks' captures no longer exist when the last idle pass runs.
    void TearDown() override {
        if (manager) {
            manager->onEnabledChanged(nullptr);
            manager->onNetworksListChanged(nullptr);
            manager->onScanningChanged(nullptr);
            manager->onConnectionInfoChanged(nullptr);
        }
    }

    void runUntilIdle() {
        communicator->runTasks();
        communicator->runIdlePass();
    }

    Calls callsOfTasks() {
        stack->takeCalls();
        communicator->runTasks();
        return stack->takeCalls();
    }

    RecordingLog log;
    std::shared_ptr<FakeWifiStack> stack = std::make_shared<FakeWifiStack>();
    FakeCommunicator* communicator = nullptr;
    std::unique_ptr<wifi::Manager> manager;
};

static_assert(!std::is_copy_constructible_v<wifi::Manager>);
static_assert(!std::is_copy_assignable_v<wifi::Manager>);

TEST_F(Manager, ManagerCreatesItsCommunicatorAndDestroysIt) {
    EXPECT_EQ(nextCommunicator(), nullptr);
    manager.reset();
    EXPECT_EQ(stack->takeCalls(), (Calls{"stopEventLoop", "~Communicator"}));
}

TEST_F(Manager, ManagerForwardsSetEnabled) {
    EXPECT_TRUE(manager->isEnabled());
    EXPECT_TRUE(manager->isWifiStackInitialized());
    int changes = 0;
    manager->onEnabledChanged([&] { ++changes; });
    manager->setEnabled(false);
    EXPECT_FALSE(manager->isEnabled());
    EXPECT_EQ(callsOfTasks(), Calls{"startStopSupplicantSync(false)"});
    EXPECT_EQ(changes, 1);
}

TEST_F(Manager, ManagerForwardsScanAndNetworks) {
    int scanChanges = 0;
    int listChanges = 0;
    manager->onScanningChanged([&] { ++scanChanges; });
    manager->onNetworksListChanged([&] { ++listChanges; });
    manager->scan();
    EXPECT_EQ(callsOfTasks(), Calls{"scanSync"});
    Communicator::SupplicantInterfaceProperties report;
    report.scanning = true;
    report.bssListChange = Communicator::PropertyChange::Set;
    report.bssList = {{"Home", -50, SecurityMode::none}};
    communicator->supplicantPropertiesHandler(report);
    runUntilIdle();
    EXPECT_TRUE(manager->isScanning());
    EXPECT_EQ(scanChanges, 1);
    EXPECT_EQ(manager->networks(),
              (std::vector<wifi::WifiNetwork>{{"Home", -50, SecurityMode::none, false}}));
    EXPECT_EQ(manager->networkAccess().at("Home").mode, SecurityMode::none);
    EXPECT_EQ(listChanges, 1);
}

TEST_F(Manager, ManagerValidatesWithoutConnecting) {
    wifi::ConnectionSettings settings;
    EXPECT_EQ(manager->validate(settings), ConnectResult::ssidEmpty);
    settings.ssid = "Home";
    settings.securityMode = SecurityMode::enterprise;
    settings.eapMethod = "PEAP";
    EXPECT_EQ(manager->validate(settings), ConnectResult::ok);
    settings.eapMethod = "PWD";
    EXPECT_EQ(manager->validate(settings), ConnectResult::eapMethodUnsupported) << "not offered";
    EXPECT_EQ(callsOfTasks(), Calls{});
    EXPECT_EQ(manager->connectionInfo(), ConnectionInfo());
}

TEST_F(Manager, ManagerForwardsCertificates) {
    wifi::ConnectionSettings settings;
    settings.ssid = "Home";
    settings.securityMode = SecurityMode::enterprise;
    wifi::Certificates certificates;
    certificates.caFile = "ca.pem";
    EXPECT_EQ(manager->validate(settings, certificates), ConnectResult::fileInvalid);
    EXPECT_EQ(manager->connect(settings, certificates), ConnectResult::fileInvalid);
    certificates.caFile = "/ca.pem";
    EXPECT_EQ(manager->validate(settings, certificates), ConnectResult::ok);
    EXPECT_EQ(callsOfTasks(), Calls{});
    std::string caFile;
    communicator->onAddNetwork = [&](const auto&, const wifi::Certificates& given) { caFile = given.caFile; };
    EXPECT_EQ(manager->connect(settings, certificates), ConnectResult::ok);
    communicator->runTasks();
    EXPECT_EQ(caFile, "/ca.pem");
}

TEST_F(Manager, ManagerForwardsWhenCarriedOut) {
    wifi::RequestFailures told;
    manager->connectConfigured("Unknown");
    manager->whenCarriedOut([&](const auto& failures) { told = failures; });
    runUntilIdle();
    EXPECT_EQ(told,
              (wifi::RequestFailures{{wifi::RequestFailure::unknownNetwork, wifi::FailureReason::none}}));
}

TEST_F(Manager, ManagerForwardsConnect) {
    int changes = 0;
    int details = 0;
    manager->onConnectionInfoChanged([&] { ++changes; });
    manager->onConnectionDetailsChanged([&] { ++details; });
    wifi::ConnectionSettings settings;
    EXPECT_EQ(manager->connect(settings), ConnectResult::ssidEmpty);
    settings.ssid = "Home";
    EXPECT_EQ(manager->connect(settings), ConnectResult::ok);
    EXPECT_EQ(callsOfTasks(),
              (Calls{"configureTimerSync(true, 60000)", "addNetworkSync(Home)", "selectSync(1)",
                     "getAllConfiguredNetworksSync", "getAllConfiguredNetworksSync"}));
    EXPECT_EQ(manager->connectionInfo().status, ConnectionInfo::Status::connectingWifi);
    EXPECT_EQ(manager->connectionInfo().ssid, "Home");
    EXPECT_EQ(manager->connectionDetails().info, manager->connectionInfo());
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(details, 1);
    manager->onConnectionDetailsChanged(nullptr);
}

TEST_F(Manager, ManagerForwardsConnectConfigured) {
    stack->configure("Home");
    manager->connectConfigured("Home");
    EXPECT_EQ(callsOfTasks(), (Calls{"configureTimerSync(true, 60000)", "getAllConfiguredNetworksSync",
                                     "selectSync(1)", "getAllConfiguredNetworksSync"}));
}

TEST_F(Manager, ManagerForwardsDisconnect) {
    manager->disconnect();
    EXPECT_EQ(callsOfTasks(), Calls{"disconnectSync"});
}

TEST_F(Manager, ManagerForwardsForgetNetwork) {
    manager->forgetNetwork("");
    EXPECT_EQ(communicator->queuedTasks(), 0U);
    manager->forgetNetwork("Home");
    EXPECT_EQ(callsOfTasks(), Calls{"getAllConfiguredNetworksSync"});
}

TEST_F(Manager, ManagerForwardsEapAndPhase2Methods) {
    EXPECT_EQ(manager->eapMethods(), std::set<std::string>{"PEAP"});
    EXPECT_EQ(manager->phase2Methods(), (std::set<std::string>{"GTC", "MSCHAP", "MSCHAPV2", "PAP"}));
}

}  // namespace
}  // namespace kaz::test
