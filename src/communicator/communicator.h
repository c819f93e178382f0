// The seam between the engine and the Wi-Fi stack. Commands go down through the virtual operations; reports
// come back up through the handler members.
#pragma once

#include <wifi/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// How to use one: construct, assign the handlers, startEventLoop(); call the ...Sync operations only from
// tasks on the loop thread; stopEventLoop() before destruction. Handlers run on the loop thread and are not
// locked, so they must not be assigned after the start.
//
// Operations that end in Sync make blocking calls on the bus. They report failure by their value (false,
// empty, null), never by an exception. The log tells of it too, but for a call that cannot even be made: there
// is no bus, or the supplicant has no interface, either of which the log has told before.
class Communicator {
  public:
    static constexpr std::int16_t NoSignaldBm = kaz::wifi::NoSignaldBm;

    // What the supplicant is doing, reduced to what matters here. The order of the numbers is relied upon.
    enum class SupplicantConnectionStatus : std::int32_t {
        InterfaceDisabled = 1,
        Disconnected = 2,
        Connecting = 3,
        Connected = 4,
    };

    // One access point as a scan reports it.
    struct BssProperties {
        std::string ssid;  // raw bytes; empty for a hidden network
        int signal = 0;    // dBm
        SecurityMode securityMode = SecurityMode::none;

        friend bool operator==(const BssProperties&, const BssProperties&) = default;
    };

    // What a report says about one property.
    enum class PropertyChange : std::int32_t {
        Unchanged = 0,  // not mentioned, or its value could not be resolved
        Set = 1,        // the accompanying field holds the new value
        Cleared = 2,    // now empty
    };

    // What one report of the supplicant changed.
    struct SupplicantInterfaceProperties {
        std::optional<bool> scanning;
        PropertyChange bssListChange = PropertyChange::Unchanged;
        std::vector<BssProperties> bssList;
        PropertyChange currentNetworkChange = PropertyChange::Unchanged;
        std::string currentNetworkSsid;
        PropertyChange currentBssChange = PropertyChange::Unchanged;
        BssProperties currentBss;
        std::optional<SupplicantConnectionStatus> status;

        friend bool operator==(const SupplicantInterfaceProperties&,
                               const SupplicantInterfaceProperties&) = default;
    };

    // A handle on one network in the supplicant's configuration. Must not outlive the communicator that made
    // it; to be used on the loop thread.
    class ConfiguredNetwork {
      public:
        // Equal for two handles on the same network.
        virtual std::size_t id() = 0;
        // The SSID when the handle was made; empty when it could not be read.
        virtual const std::optional<std::string>& getSsid() = 0;
        virtual bool removeSync() = 0;
        // Makes the supplicant connect to this network and disable all others.
        virtual bool selectSync() = 0;
        virtual bool setEnabledSync(bool enabled) = 0;
        virtual bool setPrioritySync(int priority) = 0;
        virtual ~ConfiguredNetwork() = default;

        ConfiguredNetwork() = default;
        ConfiguredNetwork(const ConfiguredNetwork&) = delete;
        ConfiguredNetwork& operator=(const ConfiguredNetwork&) = delete;
        ConfiguredNetwork(ConfiguredNetwork&&) = delete;
        ConfiguredNetwork& operator=(ConfiguredNetwork&&) = delete;
    };

    Communicator();
    virtual ~Communicator();
    Communicator(const Communicator&) = delete;
    Communicator& operator=(const Communicator&) = delete;
    Communicator(Communicator&&) = delete;
    Communicator& operator=(Communicator&&) = delete;

    virtual void startEventLoop() = 0;
    virtual void stopEventLoop() = 0;

    // Whether a supplicant is attached. Callable from any thread.
    virtual bool isSupplicantOn() = 0;

    // Queues a task for the loop thread; first in, first out. Callable from any thread.
    virtual void pushTaskAsync_(std::function<void()> task) = 0;

    // Arms (anew) or disarms the one periodic timer.
    virtual void configureTimerSync(bool enable, std::chrono::milliseconds interval) = 0;
    virtual void setTimerCompletedTask(std::function<void()> task) = 0;

    // The task that runs whenever nothing else is to be done. It returns the delay after which it wants to
    // run again even if nothing happens, or nothing.
    virtual void setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) = 0;

    // The user's persisted on/off choice. Both callable from any thread.
    virtual bool readEnabledConfiguration() = 0;
    virtual void writeEnabledConfiguration(bool enabled) = 0;

    // Makes the supplicant write its configuration file.
    virtual bool saveNetworkConfigurationSync() = 0;

    // Asks systemd to start or stop the supplicant's unit. True when systemd accepted.
    virtual bool startStopSupplicantSync(bool start) = 0;

    virtual bool scanSync() = 0;

    // Adds a network to the supplicant's configuration; null on failure.
    virtual std::unique_ptr<ConfiguredNetwork> addNetworkSync(const ConnectionSettings& settings) = 0;
    virtual bool reconnectSync() = 0;
    virtual bool disconnectSync() = 0;

    // The signal of the current connection in dBm.
    virtual std::optional<int> signalPollSync() = 0;

    // Every EAP method the supplicant was built with.
    virtual std::set<std::string> eapMethodsSync() = 0;

    // The networks in the supplicant's configuration, in its order.
    virtual std::vector<std::unique_ptr<ConfiguredNetwork>> getAllConfiguredNetworksSync() = 0;

    // Whether the bus was lost since the last attachment and the same supplicant is attached again. To be called
    // from wifiServiceStatusChangeHandler only.
    virtual bool supplicantSurvived() = 0;

    // The only form in which an SSID may enter a log record.
    static std::string makeSsidRedactable(const std::string& ssid);

    // The supplicant was attached or detached.
    std::function<void()> wifiServiceStatusChangeHandler;
    std::function<void(bool success)> scanningDoneHandler;
    // The supplicant chose a network by itself or at our request; empty when its SSID could not be read.
    std::function<void(const std::optional<std::string>& ssid)> networkSelectedHandler;
    // The link has, or no longer has, a configured address. Has no default: it must be assigned before the
    // start.
    std::function<void(bool online)> networkdOnlineHandler;
    std::function<void(SupplicantInterfaceProperties)> supplicantPropertiesHandler;
};

// The communicator that talks to the real daemons over the system bus.
std::unique_ptr<Communicator> createCommunicator();

}  // namespace kaz::wifi
