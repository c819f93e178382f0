#pragma once

#include "dbus/bus.h"
#include "dbus/records.h"

#include <kaz/dbus/message.h>

#include <functional>

namespace kaz::wifi {

// Reports whether the link is online, as systemd-networkd sees it. Loop thread only.
class OnlineState {
  public:
    // Runs with each state that networkd tells.
    using Handler = std::function<void(bool online)>;

    OnlineState(dbus::Bus& bus, Handler handler);

    // Subscribes to changes, until temporary subscriptions are dropped, and reports the present state.
    void subscribeSync();
    void detach();

    // A networkd that did not answer at the subscription is asked again when one joins the bus: it may have changed its
    // state before the subscription took effect.
    void onOwnerChangedSync(bool owned);
    void onSignalPropertiesChanged(dbus::MessageDecoder& decoder);
    void report(const dbus::NetworkdLinkProperties& properties);

  private:
    void readSync();

    dbus::Bus& bus_;
    Handler handler_;
    bool unanswered_ = false;  // since the subscription
};

}  // namespace kaz::wifi
