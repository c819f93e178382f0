#pragma once

#include "communicator/communicator.h"
#include "communicator/configured_networks.h"
#include "communicator/online_state.h"
#include "communicator/radio.h"
#include "communicator/supplicant_interface.h"
#include "communicator/supplicant_signals.h"
#include "communicator/supplicant_unit.h"
#include "dbus/bus.h"

#include <wifi/types.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// The communicator that controls wpa_supplicant, its systemd unit and systemd-networkd over the system bus.
//
// While the unit runs, the communicator is attached to the supplicant's first interface and turns its signals into
// calls of the handlers. It stays attached to that interface when the supplicant adds others: those are foreign, for
// example the access point of another program. When the supplicant removes the interface in use, the communicator
// detaches. Then it attaches to the first interface that is not foreign, or waits for the next one that is added. When
// an interface with the name of the first one is added, it always attaches to that.
//
// While the unit does not run, the communicator is detached. It refuses operations that need the interface, and logs a
// warning; scanSync(), refreshSync() and refreshBssListSync() log a debug record instead. Calls that cannot be made,
// because there is no bus or no interface, fail without a record.
//
// The constructor posts the task that finds the unit. The communicator detaches when the bus is lost. After a restart
// of the bus or of systemd it looks up the unit again.
//
// Communicator describes the operations. Everything else here runs on the loop thread.
class DbusCommunicator final : public Communicator {
  public:
    explicit DbusCommunicator(std::chrono::milliseconds callLimit = dbus::Bus::defaultCallLimit);

    void startEventLoop() override;
    void stopEventLoop() override;
    bool isSupplicantOn() override;
    bool supplicantSurvived() override;
    bool isSupplicantSilent() override;
    FailureReason lastFailure() override;
    void forgetFailures() override;
    StackTrouble stackTrouble() override;
    void pushTaskAsync_(std::function<void()> task) override;
    void configureTimerSync(bool enable, std::chrono::milliseconds interval) override;
    void setTimerCompletedTask(std::function<void()> task) override;
    void setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) override;
    bool readEnabledConfiguration() override;
    bool writeEnabledConfiguration(bool enabled) override;
    bool saveNetworkConfigurationSync() override;
    bool startStopSupplicantSync(bool start) override;
    bool scanSync() override;
    std::unique_ptr<Communicator::ConfiguredNetwork> addNetworkSync(
        const ConnectionSettings& settings, const Certificates& certificates) override;
    bool reconnectSync() override;
    bool disconnectSync() override;
    std::optional<int> signalPollSync() override;
    std::optional<int> polledRate() override;
    std::set<std::string> eapMethodsSync() override;
    std::vector<std::unique_ptr<Communicator::ConfiguredNetwork>> getAllConfiguredNetworksSync() override;
    void refreshBssListSync() override;
    void refreshSync() override;

    // Attaches or detaches as the unit's ActiveState demands. A transitional state detaches only if the supplicant has
    // left the bus.
    void connectOrDisconnectFromSupplicantSync(const std::string& activeState);

    // The parts, one per topic.
    ConfiguredNetworks& configuredNetworks() { return networks_; }
    Radio& radio() { return radio_; }
    SupplicantSignals& signals() { return signals_; }
    SupplicantUnit& unit() { return unit_; }
    OnlineState& onlineState() { return onlineState_; }

  private:
    void followInterfaces();
    void onInterfaceAddedSync(const dbus::OPath& interface, const std::string& name);
    void onInterfaceRemovedSync(const dbus::OPath& interface);
    void onSupplicantOwnerChangedSync(bool owned);
    void attachSync(const dbus::OPath& preferred = {});
    void attachAgainSync(const dbus::OPath& preferred = {});
    void detach();
    void detachFromEnded();
    void onConnectionChanged(bool connected);
    void logAttachment() const;

    bool unitRuns_ = false;     // the last reported state of the unit is "active" or "reloading"
    bool gone_ = false;         // the supplicant has left the bus
    bool lostWithBus_ = false;  // the bus was lost while attached, and the supplicant has not ended since
    SupplicantInterface supplicant_{bus_};
    ConfiguredNetworks networks_{supplicant_};
    Radio radio_{supplicant_};
    SupplicantSignals signals_{bus_, supplicant_, networks_, radio_, *this};
    SupplicantUnit unit_;
    OnlineState onlineState_;
    dbus::Bus bus_;  // the last member: its thread ends before anything that it uses is destroyed
};

}  // namespace kaz::wifi
