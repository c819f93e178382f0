#pragma once

#include "simulator/bus/connection.h"
#include "simulator/bus/property_signals.h"
#include "simulator/world/times.h"

#include <string>

namespace kaz::sim {

// systemd-networkd's manager: online some time after the link is up, offline as soon as it is down.
class Networkd {
  public:
    Networkd(const Environment& environment, const Times& times);

    void linkIs(bool up);

    // Sets the state until the link changes.
    void setOnlineState(const std::string& state);

    const std::string& onlineState() const noexcept { return onlineState_; }

  private:
    static const sd_bus_vtable vtable_[];

    const Environment& environment_;
    const Times& times_;
    bool up_ = false;
    std::string onlineState_ = "offline";
    Connection connection_;
    PropertySignals signals_;
    Slot slot_;
    Timer dhcp_;
};

}  // namespace kaz::sim
