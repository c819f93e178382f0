#pragma once

#include "dbus/bus.h"
#include "dbus/records.h"

#include <kaz/dbus/message.h>

#include <functional>

namespace kaz::wifi {

// Reports whether the link is online, as systemd-networkd reports it. Loop thread only.
class OnlineState {
  public:
    // Runs with each state that networkd reports.
    using Handler = std::function<void(bool online)>;

    OnlineState(dbus::Bus& bus, Handler handler);

    // Subscribes to changes until the communicator detaches, and reports the current state.
    void subscribeSync();
    void detach();

    // Reads the state again if networkd did not answer before: it may have changed before we subscribed.
    void onOwnerChangedSync(bool owned);
    void onSignalPropertiesChanged(dbus::MessageDecoder& decoder);
    void report(const dbus::NetworkdLinkProperties& properties);

  private:
    void readSync();

    dbus::Bus& bus_;
    Handler handler_;
    bool unanswered_ = false;  // networkd did not answer the last read since the subscription
};

}  // namespace kaz::wifi
