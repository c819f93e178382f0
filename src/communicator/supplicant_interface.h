#pragma once

#include "base/log.h"
#include "dbus/bus.h"
#include "dbus/remote_object.h"

#include <kaz/dbus/opath.h>

#include <atomic>
#include <chrono>

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

    // Attaches to the first interface of the supplicant. False when it has none.
    bool attachSync();
    void detach();

    // The limit of each call.
    std::chrono::milliseconds callLimit() const { return bus_.callLimit(); }

    // Empty while detached and without an interface.
    const dbus::OPath& path() const { return path_; }

    dbus::RemoteObject root() const;
    dbus::RemoteObject interface() const;
    // Its "org.freedesktop.DBus.Properties".
    dbus::RemoteObject interfaceProperties() const;
    dbus::RemoteObject network(const dbus::OPath& path) const;
    dbus::RemoteObject bssProperties(const dbus::OPath& path) const;

  private:
    dbus::RemoteObject object(const dbus::OPath& path, const char* interface) const;

    dbus::Bus& bus_;
    dbus::OPath path_;
    std::atomic<bool> attached_ = false;
};

}  // namespace kaz::wifi
