#pragma once

#include "base/log.h"
#include "communicator/call_failure.h"
#include "dbus/bus.h"
#include "dbus/remote_object.h"

#include <kaz/dbus/message.h>
#include <kaz/dbus/opath.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace kaz::wifi {

// The supplicant's interface object that we are attached to, and access to its objects. Only attached() may be called
// from any thread.
//
// A supplicant without an interface is attached too; calls on the interface then fail without a log record.
class SupplicantInterface {
  public:
    explicit SupplicantInterface(dbus::Bus& bus);

    bool attached() const { return attached_; }

    // Returns attached(). While detached it also logs: "Can't <what>, wpa_supplicant isn't running."
    bool mayUse(const char* what, log::Level level = log::Level::warn) const;

    // Attaches to the first of these that the supplicant has: with `sameSupplicant` the interface that was in use before,
    // the preferred one, and the first that is not foreign. False when it has none. It lists its newest interface first.
    bool attachSync(bool sameSupplicant, const dbus::OPath& preferred = {});
    void detach();

    // Whether the present owner of the supplicant's bus name is the one that listed its interfaces.
    bool isFromPresentOwner() const;

    // The name of the network interface, such as "wlan0". The first one counts until forget().
    void noteName(const std::string& name);
    bool isNamed(const std::string& name) const { return !name.empty() && name == name_; }

    // The supplicant has added this interface beside the one in use. Unless it was listed before, it is foreign: another
    // program has added it for its own use, such as an access point.
    void noteAdded(const dbus::OPath& interface);

    // Forgets everything about the former interfaces, because the supplicant has ended.
    void forget();

    // Whether the last call had no reply in time, and no signal has been handled since.
    bool isSilent() const { return record_.silent; }
    void noteSignal() { record_.silent = false; }

    FailureReason lastFailure() const { return lastFailureOf(record_); }
    void forgetFailures() { record_.failure.reset(); }

    // Why attachSync() has found no interface; nothing while detached and after a success.
    StackTrouble trouble() const { return trouble_; }

    // The limit of each call.
    std::chrono::milliseconds callLimit() const { return bus_.callLimit(); }

    // From now on runs the task whenever the supplicant has added or removed an interface. The name is empty if the
    // supplicant did not tell it.
    void onAdded(std::function<void(const dbus::OPath& interface, const std::string& name)> task);
    void onRemoved(std::function<void(const dbus::OPath& interface)> task);

    // Empty while detached and without an interface.
    const dbus::OPath& path() const { return path_; }
    bool hasInterface() const { return !path_.str().empty(); }

    dbus::RemoteObject root() const;
    dbus::RemoteObject interface() const;
    // Its "org.freedesktop.DBus.Properties".
    dbus::RemoteObject interfaceProperties() const;
    dbus::RemoteObject network(const dbus::OPath& path) const;
    dbus::RemoteObject bssProperties(const dbus::OPath& path) const;

  private:
    dbus::RemoteObject object(const dbus::OPath& path, const char* interface) const;
    void subscribe(const char* member, std::function<void(dbus::MessageDecoder&)> handler);
    const dbus::OPath* choose(const std::vector<dbus::OPath>& interfaces, bool sameSupplicant,
                              const dbus::OPath& preferred) const;

    dbus::Bus& bus_;
    dbus::OPath path_;
    dbus::OPath former_;             // the interface that was in use before
    std::string name_;               // of the first interface that was in use
    std::string owner_;              // the unique name of the supplicant that listed its interfaces
    std::set<std::string> listed_;   // paths, when we attached
    std::set<std::string> foreign_;  // paths
    std::atomic<bool> attached_ = false;
    mutable dbus::CallRecord record_;  // each call writes into it
    StackTrouble trouble_;
};

}  // namespace kaz::wifi
