// The interface between the engine and the Wi-Fi daemons. The engine calls the virtual operations; reports come back
// through the handler members.
#pragma once

#include <wifi/certificates.h>
#include <wifi/connection_details.h>
#include <wifi/failure_reason.h>
#include <wifi/types.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/non_copyable.h"

namespace kaz::wifi {

// Construct it, assign the handlers, then call startEventLoop(). Call stopEventLoop() before destruction. Handlers run
// on the loop thread without a lock, so do not assign them after the start.
//
// Operations whose names end in Sync make blocking calls on the bus. Call them only from tasks on the loop thread. On
// failure they return false, null or an empty value, and log it; they never throw. A call that cannot be made, because
// there is no bus or the supplicant has no interface, is not logged: the cause was logged before.
class Communicator : NonCopyable {
  public:
    static constexpr std::int16_t NoSignaldBm = kaz::wifi::NoSignaldBm;

    // The supplicant's state, reduced to what the engine needs. The tracker compares the numbers.
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
        std::array<std::uint8_t, 6> bssid{};  // zero when unknown
        int frequency = 0;                    // MHz; 0 when unknown
        NetworkDemands demands{};

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
        std::optional<std::string> authMode{};  // the supplicant's name of what protects the link
        std::optional<bool> hashToElement{};    // whether it joins networks by hash-to-element

        friend bool operator==(const SupplicantInterfaceProperties&,
                               const SupplicantInterfaceProperties&) = default;
    };

    // A step of the supplicant's link set-up, in its order.
    enum class LinkStep : std::int32_t {
        down,
        authenticating,
        associating,
        associated,
        keyExchange,
        up,
    };

    // The supplicant's own report that a key or password does not match. A pre-shared key is reported when the exchange of
    // keys fails, an SAE password when the access point proves another one.
    enum class KeyMismatch : std::int32_t { none, preSharedKey, saePassword };

    // What one signal tells about how a link is set up or why it ended.
    struct LinkEvidence {
        std::optional<LinkStep> step;
        std::optional<int>
            disconnectReason;  // IEEE 802.11 reason code; negative when this device ended the link
        std::optional<int> authenticationStatus;  // IEEE 802.11 status code
        std::optional<int> associationStatus;     // IEEE 802.11 status code
        Evidence::Eap eap = Evidence::Eap::none;
        KeyMismatch mismatch = KeyMismatch::none;

        friend bool operator==(const LinkEvidence&, const LinkEvidence&) = default;
    };

    // A handle on one network in the supplicant's configuration. Use it on the loop thread. It must not outlive its
    // communicator.
    class ConfiguredNetwork : NonCopyable {
      public:
        // Equal for two handles on the same network.
        virtual std::size_t id() = 0;
        // The SSID when the handle was made; nullopt if it could not be read.
        virtual const std::optional<std::string>& getSsid() = 0;
        virtual bool removeSync() = 0;
        // Makes the supplicant connect to this network and disable all others.
        virtual bool selectSync() = 0;
        virtual bool setEnabledSync(bool enabled) = 0;
        virtual bool setPrioritySync(int priority) = 0;
        virtual ~ConfiguredNetwork() = default;
    };

    Communicator();
    virtual ~Communicator();

    virtual void startEventLoop() = 0;
    virtual void stopEventLoop() = 0;

    // Whether a supplicant is attached. Callable from any thread.
    virtual bool isSupplicantOn() = 0;

    // Whether the supplicant did not answer the last call in time, and has sent nothing since.
    virtual bool isSupplicantSilent() = 0;

    // Why the last call that failed since forgetFailures() has failed; `none` if none did.
    virtual FailureReason lastFailure() = 0;
    virtual void forgetFailures() = 0;

    // Why no supplicant is attached.
    virtual StackTrouble stackTrouble() = 0;

    // Queues a task for the loop thread; first in, first out. Callable from any thread.
    virtual void pushTaskAsync_(std::function<void()> task) = 0;

    // Starts, restarts or stops the one periodic timer.
    virtual void configureTimerSync(bool enable, std::chrono::milliseconds interval) = 0;
    virtual void setTimerCompletedTask(std::function<void()> task) = 0;

    // The task that runs when there is nothing else to do. It returns the delay after which it must run again without
    // an event, or nullopt.
    virtual void setIdleTask(std::function<std::optional<std::chrono::milliseconds>()> task) = 0;

    // The user's on/off choice in the configuration file. False if it cannot be written. Callable from any thread.
    virtual bool readEnabledConfiguration() = 0;
    virtual bool writeEnabledConfiguration(bool enabled) = 0;

    // Makes the supplicant write its configuration file.
    virtual bool saveNetworkConfigurationSync() = 0;

    // Asks systemd to start or stop the supplicant's unit. True when systemd accepted.
    virtual bool startStopSupplicantSync(bool start) = 0;

    virtual bool scanSync() = 0;

    // Adds a network to the supplicant's configuration; null on failure. Only an enterprise network uses the
    // certificates.
    virtual std::unique_ptr<ConfiguredNetwork> addNetworkSync(const ConnectionSettings& settings,
                                                              const Certificates& certificates) = 0;
    virtual bool reconnectSync() = 0;
    virtual bool disconnectSync() = 0;

    // The signal of the current connection in dBm.
    virtual std::optional<int> signalPollSync() = 0;
    // The rate of the link in Mbit/s when the signal was last polled; nothing if the supplicant did not tell it.
    virtual std::optional<int> polledRate() = 0;

    // Every EAP method the supplicant was built with.
    virtual std::set<std::string> eapMethodsSync() = 0;

    // The networks in the supplicant's configuration, in its order.
    virtual std::vector<std::unique_ptr<ConfiguredNetwork>> getAllConfiguredNetworksSync() = 0;

    // Whether the bus was lost since the last attachment and the same supplicant is attached again. Call it only from
    // wifiServiceStatusChangeHandler.
    virtual bool supplicantSurvived() = 0;

    // Reads the list of access points again and reports it. The supplicant reports which access points are in range,
    // but not how their signal changes.
    virtual void refreshBssListSync() = 0;

    // Reads all properties of the supplicant's interface again and reports them.
    virtual void refreshSync() = 0;

    // The only form in which an SSID may enter a log record.
    static std::string makeSsidRedactable(const std::string& ssid);

    // The supplicant was attached or detached.
    std::function<void()> wifiServiceStatusChangeHandler;
    std::function<void(bool success)> scanningDoneHandler;
    // The supplicant selected a network, at the request of this or another client. `ssid` is nullopt if it could not be
    // read.
    std::function<void(const std::optional<std::string>& ssid)> networkSelectedHandler;
    // The link has, or no longer has, a configured address. This handler has no default: assign it before the start.
    std::function<void(bool online)> networkdOnlineHandler;
    std::function<void(SupplicantInterfaceProperties)> supplicantPropertiesHandler;
    // What a signal told about the link, after everything else that it told was reported.
    std::function<void(const LinkEvidence&)> linkEvidenceHandler;
    // Another client has added or removed a configured network.
    std::function<void()> configuredNetworksChangedHandler;
};

// The communicator that talks to the real daemons over the system bus.
std::unique_ptr<Communicator> createCommunicator();

}  // namespace kaz::wifi
