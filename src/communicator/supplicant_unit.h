#pragma once

#include "dbus/bus.h"

#include <kaz/dbus/message.h>
#include <kaz/dbus/opath.h>

#include <functional>
#include <string>
#include <vector>

namespace kaz::wifi {

// The supplicant's unit in systemd: starts and stops it and reports its ActiveState. Loop thread only.
class SupplicantUnit {
  public:
    // Runs with each ActiveState that systemd tells, and with an empty one when it could not be read.
    using Handler = std::function<void(const std::string& activeState)>;

    SupplicantUnit(dbus::Bus& bus, Handler handler);

    // Asks systemd to start or stop the unit. True when systemd accepted. A start also connects when that failed before.
    bool startStopSync(bool start);

    // Finds the unit, subscribes to its changes and reports its present state.
    void connectSync();

    // A systemd that joins the bus has lost our "Subscribe", and one that was absent has not loaded the unit.
    void onOwnerChangedSync(bool owned);
    void onSignalPropertiesChanged(dbus::MessageDecoder& decoder);

  private:
    dbus::OPath loadSync();
    std::string activeStateSync(const dbus::OPath& unit);
    void subscribe(const dbus::OPath& unit);
    dbus::RemoteObject systemd() const;

    dbus::Bus& bus_;
    Handler handler_;
    std::vector<dbus::OPath> subscribed_;  // for good, also over a loss of the bus
    bool found_ = false;                   // systemd has told the unit's path and state
};

}  // namespace kaz::wifi
