#pragma once

#include "base/log.h"
#include "communicator/communicator.h"
#include "dbus/bus.h"
#include "dbus/records.h"
#include "dbus/remote_object.h"

#include <kaz/dbus/opath.h>

#include <atomic>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// The communicator that controls wpa_supplicant, its systemd unit and systemd-networkd over the system bus.
//
// It follows the unit: while the unit runs it is attached to the first interface of the supplicant and turns
// that interface's signals into calls of the handlers; otherwise it is detached, and the operations that need
// the interface refuse with a warning in the log, scanSync at debug level. Calls that cannot be made, without a
// bus or to a supplicant that has no interface, fail quietly. Construction posts the task that begins to follow
// the unit. When the bus goes away it detaches; when there is a bus again, or another systemd on it, it begins
// anew.
//
// The operations of Communicator are described there. Everything else here runs on the loop thread.
class DbusCommunicator final : public Communicator {
  public:
    class ConfiguredNetwork;

    DbusCommunicator();
    ~DbusCommunicator() override;
    DbusCommunicator(const DbusCommunicator&) = delete;
    DbusCommunicator& operator=(const DbusCommunicator&) = delete;
    DbusCommunicator(DbusCommunicator&&) = delete;
    DbusCommunicator& operator=(DbusCommunicator&&) = delete;

    void startEventLoop() override;
    void stopEventLoop() override;
    bool isSupplicantOn() override;
    bool supplicantSurvived() override;
    void pushTaskAsync_(std::function<void()> task) override;
    void configureTimerSync(bool enable, std::chrono::milliseconds interval) override;
    void setTimerCompletedTask(std::function<void()> task) override;
    void setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) override;
    bool readEnabledConfiguration() override;
    void writeEnabledConfiguration(bool enabled) override;
    bool saveNetworkConfigurationSync() override;
    bool startStopSupplicantSync(bool start) override;
    bool scanSync() override;
    std::unique_ptr<Communicator::ConfiguredNetwork> addNetworkSync(
        const ConnectionSettings& settings) override;
    bool reconnectSync() override;
    bool disconnectSync() override;
    std::optional<int> signalPollSync() override;
    std::set<std::string> eapMethodsSync() override;
    std::vector<std::unique_ptr<Communicator::ConfiguredNetwork>> getAllConfiguredNetworksSync() override;

    // One network of the supplicant's configuration. False or empty on failure.
    bool selectNetworkSync(const dbus::OPath& network);
    bool removeNetworkSync(const dbus::OPath& network);
    bool setNetworkEnabledSync(const dbus::OPath& network, bool enabled);
    bool setNetworkPrioritySync(const dbus::OPath& network, int priority);
    std::optional<std::string> getConfiguredSsidForNetworkSync(const dbus::OPath& network);

    // The access points at these paths, in their order; those that cannot be read are left out. One call
    // each, and after 10 s no further one.
    std::optional<BssProperties> getBssPropertiesSync(const dbus::OPath& bss);
    std::vector<BssProperties> decodeBssPaths(const std::vector<dbus::OPath>& paths);

    // The start: finds the supplicant's unit, subscribes to its changes and acts on its present state.
    void connectToSystemdSync();
    dbus::OPath systemdLoadUnitSync();
    std::string systemdGetUnitActiveStateSync(const dbus::OPath& unit);

    // Attaches or detaches as the unit's ActiveState demands. Transitional states change nothing.
    void connectOrDisconnectFromSupplicantSync(const std::string& activeState);
    std::vector<dbus::OPath> supplicantGetInterfacesSync();

    void onSignalUnitPropertiesChanged(dbus::MessageDecoder& decoder);
    void onSignalNetworkdLinkPropertiesChanged(dbus::MessageDecoder& decoder);
    void onSignalSupplicantScanDone(dbus::MessageDecoder& decoder);
    void onSignalEAP(dbus::MessageDecoder& decoder);
    void onSignalSupplicantNetworkSelected(dbus::MessageDecoder& decoder);
    void onSignalSupplicantPropertiesChanged(dbus::MessageDecoder& decoder);

    // Resolves what was reported into the engine's terms, asking the supplicant where needed, and hands it
    // on.
    void emitSupplicantInterfaceProperties(const dbus::SupplicantInterfaceProperties& properties);
    void emitNetworkdLinkProperties(const dbus::NetworkdLinkProperties& properties);

  private:
    // Whether the supplicant is attached. Logs that it is not: "Can't <what>, wpa_supplicant isn't running."
    bool mayUseSupplicant(const char* what, log::Level level = log::Level::warn);

    dbus::RemoteObject remoteObject(const char* destination, const dbus::OPath& path, const char* interface);
    dbus::RemoteObject supplicantRoot();
    dbus::RemoteObject supplicantInterface();
    dbus::RemoteObject supplicantNetwork(const dbus::OPath& network);
    dbus::RemoteObject systemdManager();

    using SignalHandler = void (DbusCommunicator::*)(dbus::MessageDecoder&);
    void subscribe(const char* sender, const dbus::OPath& path, const char* interface, const char* member,
                   dbus::Bus::Lifetime lifetime, SignalHandler handler);

    void attach();
    void detach();
    void subscribeToSupplicant();
    void readInitialSupplicantProperties();
    void followNetworkd();
    void readNetworkd();
    void logAttachment();

    void resolveBssList(const dbus::SupplicantInterfaceProperties& from, SupplicantInterfaceProperties& to);
    void resolveCurrentNetwork(const dbus::SupplicantInterfaceProperties& from,
                               SupplicantInterfaceProperties& to);
    void resolveCurrentBss(const dbus::SupplicantInterfaceProperties& from,
                           SupplicantInterfaceProperties& to);

    void onConnectionChanged(bool connected);
    void onSystemdChanged(bool owned);
    void onNetworkdChanged(bool owned);
    void followUnit(const dbus::OPath& unit);

    dbus::OPath supplicantInterfacePath_;  // empty while detached
    std::vector<dbus::OPath> followedUnits_;
    bool unitFollowed_ = false;    // systemd has told the unit's path and state
    bool networkdSilent_ = false;  // it did not answer since we attached
    bool supplicantLost_ = false;  // together with the bus, and not seen to stop since
    std::atomic<bool> supplicantOn_ = false;
    dbus::Bus bus_;  // the last member, so that its thread ends before anything it uses does
};

}  // namespace kaz::wifi
