#pragma once

#include "base/log.h"
#include "dbus/bus.h"
#include "dbus/remote_object.h"

#include <kaz/dbus/opath.h>

#include <atomic>
#include <chrono>
#include <functional>

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

    // Attaches to the first interface of the supplicant. False when it has none. A supplicant lists its newest
    // interface first, so with `sameSupplicant` the interface that was in use before comes first if it is still there.
    bool attachSync(bool sameSupplicant);
    void detach();

    // The limit of each call.
    std::chrono::milliseconds callLimit() const { return bus_.callLimit(); }

    // From now on runs the task whenever the supplicant has added or removed an interface.
    using InterfaceTask = std::function<void(const dbus::OPath& interface)>;
    void onAdded(InterfaceTask task);
    void onRemoved(InterfaceTask task);

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
    void subscribe(const char* member, InterfaceTask task);

    dbus::Bus& bus_;
    dbus::OPath path_;
    dbus::OPath former_;  // the interface that was in use before
    std::atomic<bool> attached_ = false;
};

}  // namespace kaz::wifi
