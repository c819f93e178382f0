#pragma once

#include "communicator/communicator.h"
#include "doubles/fake_clock/fake_clock.h"
#include "doubles/fake_communicator/fake_communicator.h"
#include "doubles/fake_communicator/fake_wifi_stack.h"
#include "doubles/fake_metrics/fake_metrics.h"
#include "doubles/recording_log/recording_log.h"
#include "manager/manager_impl.h"
#include "support/printed_values/printed_reports.h"

#include <gtest/gtest.h>
#include <wifi/types.h>

#include <chrono>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kaz::test {

using wifi::ConnectionInfo;
using wifi::ConnectionSettings;
using wifi::ConnectResult;
using wifi::SecurityMode;
using wifi::WifiNetwork;
using Bss = wifi::Communicator::BssProperties;
using PropertyChange = wifi::Communicator::PropertyChange;
using SupplicantStatus = wifi::Communicator::SupplicantConnectionStatus;
using SupplicantReport = wifi::Communicator::SupplicantInterfaceProperties;

using Calls = std::vector<std::string>;
using GaugeReports = std::vector<GaugeReport>;
using Records = RecordingLog::Records;

// The communicator's calls that the tests name most often.
inline const std::string posting = "pushTaskAsync_";
inline const std::string listing = "getAllConfiguredNetworksSync";
inline const std::string saving = "saveNetworkConfigurationSync";
inline const std::string timerOn = "configureTimerSync(true, 60000)";
inline const std::string timerOff = "configureTimerSync(false, 60000)";

// How often each callback was invoked.
struct Callbacks {
    int enabled = 0;
    int networks = 0;
    int scanning = 0;
    int connection = 0;

    friend bool operator==(const Callbacks&, const Callbacks&) = default;
};
std::ostream& operator<<(std::ostream& out, const Callbacks& callbacks);

// Settings for a network with a password that is valid for the mode.
ConnectionSettings settingsFor(const std::string& ssid, SecurityMode mode = SecurityMode::rsnPsk);

// An engine on a fake communicator. It works only when the test tells it to, on the test's thread.
class EngineTest : public ::testing::Test {
  protected:
    EngineTest();
    ~EngineTest() override;

    // Constructs the engine and runs nothing.
    void construct();
    // Constructs the engine and runs it until idle. Then forgets all calls, callbacks, gauges and log records.
    void start();
    // The same with an attached supplicant.
    void startWithSupplicant();

    // Runs the queued tasks and then an idle pass. Returns the delay that the idle pass asked for.
    std::optional<std::chrono::milliseconds> runUntilIdle();

    void attachSupplicant();
    void detachSupplicant();
    void report(const SupplicantReport& report) { communicator->supplicantPropertiesHandler(report); }
    void reportStatus(SupplicantStatus status);
    void reportBss(const std::string& ssid, int signal = -50);
    void reportBssList(std::vector<Bss> list);
    void reportScanning(bool scanning);
    void reportLinkUp(const std::string& ssid);
    void reportOnline(bool online) { communicator->networkdOnlineHandler(online); }

    // Makes the engine connected to the network, then forgets what happened.
    void becomeConnected(const std::string& ssid);

    // Requests a connection and runs until idle.
    void connectTo(const std::string& ssid);
    // The supplicant selects the network. Runs until idle, then forgets what happened.
    void selectNetwork(const std::string& ssid);

    // What happened since these were last called.
    Calls takeCalls() { return stack->takeCalls(); }
    // Forgets earlier calls, runs until idle and returns the calls made.
    Calls callsUntilIdle();
    Callbacks takeCallbacks();
    void forget();

    // The published state in one line.
    std::string state() const;

    RecordingLog log;
    std::shared_ptr<FakeWifiStack> stack = std::make_shared<FakeWifiStack>();
    std::shared_ptr<FakeClock> clock = std::make_shared<FakeClock>();
    FakeCommunicator* communicator = nullptr;  // the engine's
    std::unique_ptr<wifi::ManagerImpl> engine;

  private:
    Callbacks callbacks_;
};

// An engine with an attached supplicant from the beginning.
class EngineWithSupplicant : public EngineTest {
  protected:
    EngineWithSupplicant() { startWithSupplicant(); }
};

}  // namespace kaz::test
