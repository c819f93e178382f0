#pragma once

#include <wifi/certificates.h>
#include <wifi/connection_details.h>
#include <wifi/network_access.h>
#include <wifi/request_failure.h>
#include <wifi/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

class ManagerImpl;

/// Manages the Wi-Fi of one device: switches it on and off, scans, connects, forgets, and reports the state.
///
/// Threads: any thread may call any operation, also inside a callback. A Manager owns one thread. Each
/// request becomes a task on this thread; tasks run one at a time, in the order of the requests. No operation
/// waits for the bus or for a task, except the destructor. Up to 4096 requests wait; further ones are dropped
/// with a warning in the log, for example while the bus hangs.
///
/// Results: requests return nothing. Only `connect` validates its settings and returns the verdict. The
/// outcome appears later in connectionInfo() and networks(), and the cause of a failure in connectionDetails().
/// whenCarriedOut() tells when requests have been made, and which failed.
///
/// Callbacks run on the Manager's thread and have no arguments: call the matching getter. They should return
/// soon, because nothing else runs on that thread meanwhile. An exception from a callback is logged and
/// otherwise ignored. There is one callback per kind, initially none; registering replaces it, and an empty
/// function removes it. After a registration on another thread returned, the old callback may still be
/// running. A callback may also begin while ~Manager runs its last pass. So a callback must not reach the
/// Manager through a pointer that is being reset, such as a std::unique_ptr. Callbacks are copied and replaced under
/// a lock: copy constructors and destructors of their captures must not call the Manager, or it deadlocks.
/// Signals are blocked on this thread. Processes and threads that a callback starts inherit this, and must unblock
/// them.
///
/// Attempts: `connect` and `connectConfigured` start an attempt. connectionInfo() shows `connectingWifi` with
/// its SSID, and on success `connectingIP`, then `connected`. The attempt fails when the supplicant gives up,
/// when it connects to another network, or when it does not react for 2000 ms. The timeout is paused during a
/// scan and restarts at zero after it. After a failure, `disconnectSsid` names the network,
/// `disconnectReason` is `causedBySystem`, and `status` shows what the supplicant does now: `disconnected`,
/// or a connection to another network. That can be the former connection, if the supplicant refused the
/// request or never received it.
///
/// Platform: if the device has its own D-Bus library, four promises depend on it: reconnecting to a lost bus,
/// the destructor's limit for a peer that does not answer, that a daemon's error text, which may repeat a
/// password, is not logged, and the reasons in RequestFailures. CMake reports which of them it lacks. That
/// library also decides whether ~Manager works in a child of fork(), and whether it aborts on the Manager's own
/// thread.
///
/// Log records go to the process's default spdlog logger, which may be replaced at any time. Without one,
/// after spdlog was shut down, they are dropped. An SSID appears there only as ssid="..."; passwords, keys
/// and identities never appear.
class [[gnu::visibility("default")]] Manager {
  public:
    /// Starts the thread and returns. The getters report a system without Wi-Fi until the first state has
    /// been read (see onEnabledChanged). Throws std::system_error when no thread can be started or no file
    /// descriptor is left for its event loop. A bus that cannot be reached, now or later, is not an error: it
    /// is logged, and the connection is retried every few seconds.
    Manager();

    /// Waits for the running task or callback, drops the queued tasks, and ends the thread. Before the thread
    /// ends, networks that an unfinished attempt disabled are enabled again, and a save that was due is made.
    /// Calls to a peer that does not answer are cancelled after about a second. No callback runs after the
    /// destructor returned. Must not run on the Manager's thread, for example in a callback: it then logs an error
    /// and aborts the process.
    ///
    /// After fork(), the child may only destroy the Manager; the parent's connection is not affected.
    ~Manager();

    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;
    Manager(Manager &&) = delete;
    Manager& operator=(Manager&&) = delete;

    /// Switches Wi-Fi on or off and stores the choice, which survives a restart of the device. Before it
    /// returns, it sets isEnabled() and writes the configuration file. It blocks as long as the disk takes or
    /// another process holds the file's lock. The supplicant is started or stopped later, on the Manager's
    /// thread. A repeated `true` tries again to start it. A choice that cannot be written is logged. It is
    /// lost when the supplicant next starts or stops, usually due to this call: then the file is read again.
    void setEnabled(bool enabled);

    /// The user's choice: true when none is stored, false when the stored value is invalid. Lock-free.
    bool isEnabled() const;

    /// Whether the Manager is attached to a running supplicant. Scanning and connecting work only then. What stands
    /// in the way is in connectionDetails(). Lock-free.
    bool isWifiStackInitialized() const;

    /// Called after isEnabled() or isWifiStackInitialized() changed.
    void onEnabledChanged(std::function<void()> callback);

    /// Requests a scan. Its results change networks(). Ignored while isWifiStackInitialized() is false. The
    /// supplicant may refuse the request, for example while it is scanning.
    void scan();

    /// Whether the supplicant reported a scan in progress, requested or not. Lock-free.
    bool isScanning() const;

    /// Called after isScanning() changed, but not when the supplicant stopped during a scan.
    void onScanningChanged(std::function<void()> callback);

    /// The networks in range, strongest first, one entry per SSID. Hidden networks are left out, and so is
    /// the network that is in use or being connected to. Returns a copy.
    std::vector<WifiNetwork> networks();

    /// Called after networks() changed.
    void onNetworksListChanged(std::function<void()> callback);

    /// By SSID, what each network in range asks for and the mode that joins it, also for the network in use. Never older
    /// than networks(), also inside the callback of onNetworksListChanged(). A change of this alone has no callback.
    /// Returns a copy.
    std::map<std::string, NetworkAccess> networkAccess() const;

    /// The EAP methods that `connect` accepts: those of "MSCHAPV2", "PEAP", "PWD" and "TTLS" that the
    /// supplicant offers. Empty until the Manager first attached to the supplicant. Returns a copy.
    std::set<std::string> eapMethods() const;

    /// The inner methods that `connect` accepts: always "GTC", "MSCHAP", "MSCHAPV2" and "PAP".
    std::set<std::string> phase2Methods() const;

    /// Adds a network to the supplicant's configuration and connects to it. It replaces older configurations
    /// of the same SSID and ends an existing connection. See "Attempts" at Manager.
    ///
    /// First validates the settings on the calling thread: the SSID's length, then the rules of the security
    /// mode (see ConnectResult). Lengths are in bytes. A WEP key is 5 or 13 characters, not hexadecimal
    /// digits. Any result but `ok` means that nothing changed. A field with NUL or invalid UTF-8 is accepted,
    /// but cannot be sent to the supplicant: the attempt fails after the 2000 ms.
    ConnectResult connect(const ConnectionSettings& settings);

    /// The verdict of `connect` on the settings, without connecting: for a user interface that validates while the
    /// user types. Changes nothing and does not block. The verdict on an EAP method follows eapMethods(). Where
    /// `connect` says `ok` although a field cannot be sent to the supplicant, the verdict is `notSendable`.
    ConnectResult validate(const ConnectionSettings& settings) const;

    /// The same for an enterprise network whose server is verified, or that asks for a client certificate. Empty
    /// certificates change nothing. Otherwise:
    ///
    /// - `eapMethod` is "PEAP", "TTLS" or "TLS", if the supplicant offers it; the other methods verify no certificate.
    ///   "TLS" needs a private key, and no password. An empty one means "TLS" with a private key, and without one that
    ///   the server chooses between "PEAP" and "TTLS".
    /// - The rules of ConnectResult for certificates apply after those of the settings.
    ///
    /// connectConfigured() uses them too, because the supplicant stores their paths and the key's password.
    ConnectResult connect(const ConnectionSettings& settings, const Certificates& certificates);
    /// The same for settings with certificates.
    ConnectResult validate(const ConnectionSettings& settings, const Certificates& certificates) const;

    /// Connects to a configured network. See "Attempts" at Manager. Without a configuration of this SSID the
    /// attempt fails after the 2000 ms.
    void connectConfigured(const std::string& ssid);

    /// Ends the connection or the attempt, and the supplicant's own search: it does not connect until the next
    /// request, unless another program asks for it or the supplicant is started again. The network stays configured.
    void disconnect();

    /// Removes every configuration of this SSID and ends its connection if it is in use. Ignores an empty
    /// SSID.
    void forgetNetwork(const std::string& ssid);

    /// Calls `callback` once, on the Manager's thread, when every request made before has ended, and the state that it
    /// led to is published and saved. The argument has what failed of the requests since the last call of
    /// whenCarriedOut(), and why; it is empty if nothing did, as far as the daemons said. The callback comes also when
    /// requests are dropped or fail, and when there were none: then at the end of the first state.
    ///
    /// A request to connect has ended when the supplicant has begun, not when the attempt ends. While an attempt runs,
    /// nothing is saved; if that fails later, the next callback is told. The rules for callbacks at Manager apply, but
    /// these callbacks do not replace each other. ~Manager destroys those that wait, without calling them.
    void whenCarriedOut(std::function<void(const RequestFailures& failures)> callback);

    /// The state of the connection. Returns a copy.
    ConnectionInfo connectionInfo() const;

    /// Called after connectionInfo() changed in any field.
    void onConnectionInfoChanged(std::function<void()> callback);

    /// The state of the connection with the cause of the last end. Its `info` is never older than the cause: when an end
    /// shows in connectionInfo(), its cause is here, also inside the callback of onConnectionInfoChanged(). Evidence that
    /// the supplicant reports later may still refine the cause. Returns a copy.
    ConnectionDetails connectionDetails() const;

    /// Called after connectionDetails() changed in any field. When connectionInfo() changed too, its callback is called
    /// first.
    void onConnectionDetailsChanged(std::function<void()> callback);

    /// After this time in `connectingIP` without an address, ConnectionDetails::trouble becomes `noAddress`. It ends
    /// nothing: the address may still come, and then `trouble` is `none` again. Applies to the present stage, too. Zero or
    /// less means no limit, which is the default.
    void setAddressTimeout(std::chrono::milliseconds timeout);

  private:
    std::unique_ptr<ManagerImpl> impl_;
};

}  // namespace kaz::wifi
