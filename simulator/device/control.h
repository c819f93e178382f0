#pragma once

#include "simulator/bus/connection.h"

namespace kaz::sim {

class Device;

// The bus interface with which a test in another process controls the device. docs/simulator.md describes its
// methods.
class Control {
  public:
    // All references must outlive this.
    Control(const Environment& environment, Device& device);

  private:
    static const sd_bus_vtable vtable_[];

    void addAccessPoint(sd_bus_message* call);
    void removeAccessPoint(sd_bus_message* call);
    void alterAccessPoint(sd_bus_message* call);
    void setSignal(sd_bus_message* call);
    void deauthenticate(sd_bus_message* call);
    void dropLink(sd_bus_message* call);
    void setOnlineState(sd_bus_message* call);
    void crashSupplicant(sd_bus_message* call);
    void restartSupplicant(sd_bus_message* call);
    void setAutoRestart(sd_bus_message* call);
    void setUnitState(sd_bus_message* call);
    void storm(sd_bus_message* call);
    void orderFault(sd_bus_message* call);
    void timesFired(sd_bus_message* call);
    void clearFaults(sd_bus_message* call);
    void calls(sd_bus_message* call);
    void forgetCalls(sd_bus_message* call);

    Device& device_;
    Connection connection_;
    Slot slot_;
};

}  // namespace kaz::sim
