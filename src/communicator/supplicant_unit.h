#pragma once

#include "communicator/call_failure.h"
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
    // Runs with each ActiveState that systemd reports, and with an empty one if it could not be read.
    using Handler = std::function<void(const std::string& activeState)>;

    SupplicantUnit(dbus::Bus& bus, Handler handler);

    // Asks systemd to start or stop the unit. True when systemd accepted. An accepted start also calls connectSync()
    // if the last one failed.
    bool startStopSync(bool start);

    // Loads the unit, subscribes to its changes and reports its current state.
    void connectSync();

    // Asks for the state of the unit that connectSync() found and reports it.
    void reportStateSync();

    // Connects again: LoadUnit fails while systemd is absent, and a restarted systemd has lost our "Subscribe".
    void onOwnerChangedSync(bool owned);
    void onSignalPropertiesChanged(dbus::MessageDecoder& decoder);

    // Why systemd did not tell the state of the unit; `none` if it did.
    FailureReason unreadBecause() const { return unreadBecause_; }

    FailureReason lastFailure() const { return lastFailureOf(record_); }
    void forgetFailures() { record_.failure.reset(); }

  private:
    dbus::OPath loadSync();
    std::string activeStateSync();
    void subscribe();
    dbus::RemoteObject systemd();

    dbus::Bus& bus_;
    Handler handler_;
    dbus::OPath path_;
    std::vector<std::string> subscribed_;  // paths of units; Bus subscribes again after a reconnect
    bool found_ = false;                   // systemd has reported the unit's path and state
    FailureReason unreadBecause_ = FailureReason::none;
    dbus::CallRecord record_;
};

}  // namespace kaz::wifi
