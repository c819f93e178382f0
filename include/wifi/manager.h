#pragma once

#include <wifi/types.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

class ManagerImpl;

/// Manages the Wi-Fi of one device: switches it on and off, scans, connects, forgets, and follows the state.
///
/// A Manager runs one thread of its own on which all of its work happens: requests become tasks that run there
/// one after the other in the order they were made, and callbacks are invoked there. Every operation may be
/// called from any thread, from inside a callback too. No operation waits for the bus or for a task. Requests
/// report nothing, but for `connect`, which judges its argument by its rules and by eapMethods(); their outcome
/// shows later in connectionInfo() and networks(). While 4096 of them are waiting, as behind a bus that hangs,
/// further ones are dropped, with a warning in the log.
///
/// Callbacks carry no arguments: call the matching getter to learn the new state. A callback should return
/// soon, because nothing else happens while it runs; an exception it throws is logged and otherwise ignored.
/// There is one callback of each kind, none at first. Registering replaces it, an empty function switches it
/// off. A callback that is running while another thread replaces it may still be running when the registration
/// returns. No lock is held while a callback runs, but one is while it is copied or replaced: the copying and
/// the destruction of what it captured must not call the Manager, which would hang.
///
/// Log records go to what is the process's default spdlog logger at that moment. It may be replaced at any time;
/// when there is none, because logging was shut down, they are dropped. An SSID appears there only in the form
/// ssid="...", and no password, key or identity ever does.
class [[gnu::visibility("default")]] Manager {
  public:
    /// Starts the thread and begins to follow the system. Returns at once: until the first state has been read
    /// (see onEnabledChanged) the getters tell of a system without Wi-Fi. Throws std::system_error when no
    /// thread can be started, or no descriptor is left for its event loop; a bus that cannot be reached is not
    /// an error here: it is logged, and asked again every few seconds. The same goes for a bus that is lost
    /// later.
    Manager();

    /// Ends the thread. A task or callback that is running is waited for, tasks not yet begun are dropped. What
    /// the supplicant is owed follows: the other networks, which an attempt that has not ended yet disabled, are
    /// enabled again, and then a configuration that was still to be saved is saved. When a peer on the bus does
    /// not answer, all of this is given up after about a second. No callback runs afterwards. Must not be called
    /// from a callback.
    ///
    /// A child process that inherited the Manager by fork() may destroy it, which then does nothing to the
    /// parent's connection, and must not use it otherwise.
    ~Manager();

    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;
    Manager(Manager &&) = delete;
    Manager& operator=(Manager&&) = delete;

    /// Switches Wi-Fi on or off and remembers the choice across restarts of the device. The flag and the
    /// configuration file are written on the calling thread before this returns, so the call takes as long as
    /// the disk does, and as long as another process holds the file's lock. Starting or stopping the supplicant
    /// follows on the Manager's thread. A repeated `true` tries again to start the supplicant. A choice that
    /// cannot be written is logged and holds only until the supplicant next starts or stops, which the switch
    /// itself usually brings about: then the file is read again.
    void setEnabled(bool enabled);

    /// The user's choice: true when there is none yet, false for a value in the file that means nothing.
    /// Lock-free.
    bool isEnabled() const;

    /// Whether the supplicant runs and is being followed; scanning and connecting work only while it does.
    /// Lock-free.
    bool isWifiStackInitialized() const;

    /// Called after isEnabled() or isWifiStackInitialized() changed.
    void onEnabledChanged(std::function<void()> callback);

    /// Asks for a scan for networks. Results arrive as a change of networks(). Ignored while the supplicant
    /// does not run; while it scans already, it decides what becomes of the request, and may refuse it.
    void scan();

    /// Whether the supplicant reported a scan in progress, asked for or not. Lock-free.
    bool isScanning() const;

    /// Called after isScanning() changed; not called when it turns false because the supplicant went away.
    void onScanningChanged(std::function<void()> callback);

    /// The networks in range, strongest first, one entry an SSID. The network in use or being connected to is
    /// left out, as are networks that hide their SSID. Returns a copy.
    std::vector<WifiNetwork> networks();

    /// Called after networks() changed.
    void onNetworksListChanged(std::function<void()> callback);

    /// The EAP methods that `connect` accepts: those of "MSCHAPV2", "PEAP", "PWD" and "TTLS" that the
    /// supplicant offers. Empty until the supplicant was found running. Returns a copy.
    std::set<std::string> eapMethods() const;

    /// The inner methods that `connect` accepts: always "GTC", "MSCHAP", "MSCHAPV2" and "PAP".
    std::set<std::string> phase2Methods() const;

    /// Connects to a network, adding it to the configuration. An older configuration of the same SSID is
    /// replaced, an existing connection is given up first.
    ///
    /// Checks the settings and returns the verdict; anything but `ok` changes nothing. Checked are, in this
    /// order, the SSID's length and what the security mode demands: see ConnectResult. Lengths are in bytes,
    /// and a WEP key is 5 or 13 characters as they are, not hexadecimal digits.
    ///
    /// After `ok` the attempt shows in connectionInfo() as `connectingWifi` with the SSID. It succeeds with
    /// `connectingIP`, and then `connected`. It fails when the supplicant gives up, when it connects to another
    /// network, or when it does not react for 2000 ms, a time that stands still during a scan and begins anew
    /// after it. Then `disconnectSsid` names the network, with the reason `causedBySystem`, and the status is
    /// what the supplicant is at: `disconnected`, or the connection to another network. That may be the former
    /// one, when the supplicant refused the request or never heard of it.
    ///
    /// Settings with a text that the bus cannot carry, which is one with a NUL or with invalid UTF-8, are
    /// accepted, but never reach the supplicant: the attempt is given up after the 2000 ms.
    ConnectResult connect(const ConnectionSettings& settings);

    /// Connects to a network that is configured already. The attempt shows and ends as one of `connect` does;
    /// when there is none with this SSID, it is given up after the 2000 ms.
    void connectConfigured(const std::string& ssid);

    /// Ends the connection or the attempt. The configuration is kept.
    void disconnect();

    /// Removes every configuration of this SSID, ending its connection if it is the one in use. An empty SSID
    /// is ignored.
    void forgetNetwork(const std::string& ssid);

    /// The state of the connection. Returns a copy.
    ConnectionInfo connectionInfo() const;

    /// Called after connectionInfo() changed in any field.
    void onConnectionInfoChanged(std::function<void()> callback);

  private:
    std::unique_ptr<ManagerImpl> impl_;
};

}  // namespace kaz::wifi
