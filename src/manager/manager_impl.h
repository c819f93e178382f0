#pragma once

#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "connection_info/connection_metrics.h"
#include "connection_info/time_provider.h"
#include "manager/supplicant_configuration.h"

#include <wifi/types.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// The engine behind Manager.
//
// Requests, callable from any thread, become tasks; task... and signal... functions run on the loop thread,
// one at a time. They change members that only the loop thread uses; what others may see is published lazily,
// in the idle pass: the connection info first, then the network list, and then the supplicant's configuration
// is saved if that is owed.
//
// The mutex guards the published copies and the callbacks. It is held to copy or to swap, never across a call
// of the communicator nor of a callback.
class ManagerImpl {
  public:
    ManagerImpl();
    ManagerImpl(std::unique_ptr<Communicator> communicator, std::shared_ptr<TimeProvider> timeProvider);
    ~ManagerImpl();
    ManagerImpl(const ManagerImpl&) = delete;
    ManagerImpl& operator=(const ManagerImpl&) = delete;
    ManagerImpl(ManagerImpl&&) = delete;
    ManagerImpl& operator=(ManagerImpl&&) = delete;

    // As in Manager.
    void setEnabled(bool on);
    bool isEnabled() const { return enabled_; }
    bool isWifiStackInitialized() const { return wifiStackInitialized_; }
    bool isScanning() const { return scanning_; }
    void scan();
    std::vector<WifiNetwork> networks();
    std::set<std::string> eapMethods() const;
    std::set<std::string> phase2Methods() const;
    ConnectResult connect(const ConnectionSettings& settings);
    void connectConfigured(const std::string& ssid);
    void disconnect();
    void forgetNetwork(const std::string& ssid);
    ConnectionInfo connectionInfo() const;
    void onEnabledChanged(std::function<void()> callback);
    void onNetworksListChanged(std::function<void()> callback);
    void onScanningChanged(std::function<void()> callback);
    void onConnectionInfoChanged(std::function<void()> callback);

  private:
    using Callback = std::function<void()>;

    // Lives while a caller's choice of on or off is being written.
    class Choice {
      public:
        explicit Choice(ManagerImpl& manager);
        ~Choice();
        Choice(const Choice&) = delete;
        Choice& operator=(const Choice&) = delete;
        Choice(Choice&&) = delete;
        Choice& operator=(Choice&&) = delete;

      private:
        ManagerImpl& manager_;
    };

    void wireCommunicator();

    // lifecycle.cpp
    void signalWifiServiceStatusChange();
    bool adoptStoredChoice();  // true when it differs from what was known
    std::optional<std::chrono::milliseconds> signalEventLoopIdle();
    void signalTimerCompleted();
    void taskCallEnabledChangedCallback();

    // networks.cpp
    void signalScanningDone(bool success);
    void taskUpdateNetworks();
    std::vector<WifiNetwork> currentNetworkList() const;

    // connecting.cpp
    void signalNetworkSelected(const std::optional<std::string>& ssid);
    void taskConnect(const ConnectionSettings& settings);
    void taskConnectConfigured(const std::string& ssid);
    void taskConnectCommon(Communicator::ConfiguredNetwork& network);
    void taskDisconnect();
    void taskForgetNetwork(const std::string& ssid);

    // refresh.cpp
    void signalSupplicantPropertiesChanged(Communicator::SupplicantInterfaceProperties properties);
    void taskUpdateConfiguredNetworks();
    void taskUpdateEapMethods();
    void taskUpdateConnectionInfo();
    void updateSignalPollTimer(const ConnectionInfo& next);
    void reactToSuccess(const ConnectionInfo& next);

    // The state of a callback is its owner's business: copied under the lock, invoked without it.
    void replaceCallback(Callback& target, Callback callback);
    void notify(const Callback& callback);

    std::unique_ptr<Communicator> communicator_;
    ConnectionMetrics metrics_;
    mutable std::mutex mutex_;
    // Of two callers who switch at once, one comes last in everything: flag, file and supplicant.
    std::mutex switchMutex_;

    // Loop thread only.
    ConnectionInfoHelper connectionInfoHelper_;
    SupplicantConfiguration configuration_;
    std::vector<Communicator::BssProperties> bssList_;
    std::set<std::string> configuredSsids_;
    bool networksDirty_ = false;
    bool connectionInfoStored_ = false;

    std::atomic<bool> enabled_ = false;
    std::atomic<bool> wifiStackInitialized_ = false;
    std::atomic<bool> scanning_ = false;
    std::atomic<bool> stopping_ = false;

    // Published, under the mutex. Only the loop thread writes the first two, so it may read them without.
    std::vector<WifiNetwork> networks_;
    ConnectionInfo connectionInfo_;
    std::set<std::string> eapMethods_;

    // Under the mutex.
    unsigned choicesMade_ = 0;
    unsigned choicesWritten_ = 0;
    Callback enabledChangedCallback_;
    Callback networksListChangedCallback_;
    Callback scanningChangedCallback_;
    Callback connectionInfoChangedCallback_;
};

}  // namespace kaz::wifi
