#pragma once

#include "base/non_copyable.h"
#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "connection_info/time_provider.h"
#include "manager/connecting.h"
#include "manager/connection_refresh.h"
#include "manager/eap_methods.h"
#include "manager/enabled_choice.h"
#include "manager/network_in_use_reports.h"
#include "manager/network_list.h"
#include "manager/presentation.h"
#include "manager/published.h"
#include "manager/request_ledger.h"
#include "manager/state_refresh.h"
#include "manager/supplicant_configuration.h"
#include "manager/supplicant_reports.h"
#include "outcome/judge.h"

#include <wifi/certificates.h>
#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// The engine behind Manager. It posts requests as tasks and passes the communicator's reports to their handlers.
//
// Requests and getters may be called from any thread. Functions named task... and signal... run on the loop thread, one
// at a time. The idle pass publishes what they changed: first the connection, then the network list. Then it saves the
// supplicant's configuration if a save was requested.
class ManagerImpl : NonCopyable {
  public:
    ManagerImpl();
    ManagerImpl(std::unique_ptr<Communicator> communicator, std::shared_ptr<TimeProvider> timeProvider);
    ~ManagerImpl();

    // As in Manager.
    void setEnabled(bool on) { choice_.setEnabled(on); }
    bool isEnabled() const { return choice_.isEnabled(); }
    bool isWifiStackInitialized() const { return wifiStackInitialized_; }
    bool isScanning() const { return reports_.isScanning(); }
    void scan();
    std::vector<WifiNetwork> networks() const { return published_.networks(); }
    NetworkAccessBySsid networkAccess() const { return published_.networkAccess(); }
    std::set<std::string> eapMethods() const { return published_.eapMethods().plain; }
    std::set<std::string> phase2Methods() const { return wifi::phase2Methods(); }
    ConnectResult connect(const ConnectionSettings& settings, const Certificates& certificates = {});
    ConnectResult validate(const ConnectionSettings& settings, const Certificates& certificates = {}) const;
    void connectConfigured(const std::string& ssid);
    void disconnect();
    void forgetNetwork(const std::string& ssid);
    void whenCarriedOut(RequestLedger::Callback callback);
    ConnectionInfo connectionInfo() const { return published_.connectionInfo(); }
    ConnectionDetails connectionDetails() const { return published_.connectionDetails(); }
    void setAddressTimeout(std::chrono::milliseconds timeout);
    void onEnabledChanged(std::function<void()> callback);
    void onNetworksListChanged(std::function<void()> callback);
    void onScanningChanged(std::function<void()> callback);
    void onConnectionInfoChanged(std::function<void()> callback);
    void onConnectionDetailsChanged(std::function<void()> callback);

  private:
    void post(RequestLedger::Request request);
    void wireCommunicator();
    void signalWifiServiceStatusChange();
    std::optional<std::chrono::milliseconds> signalEventLoopIdle();
    void signalTimerCompleted();

    std::unique_ptr<Communicator> communicator_;
    Published published_;
    RequestLedger requests_;
    ConnectionInfoHelper tracker_;
    SupplicantConfiguration configuration_;
    NetworkList list_;
    Judge judge_;
    NetworkInUseReports inUse_;
    Presentation presentation_;
    ConnectionRefresh refresh_;
    Connecting connecting_;
    SupplicantReports reports_;
    StateRefresh stateRefresh_;
    EnabledChoice choice_;
    std::atomic<bool> wifiStackInitialized_ = false;
    std::atomic<bool> stopping_ = false;
};

}  // namespace kaz::wifi
