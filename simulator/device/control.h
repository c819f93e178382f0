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

    Device& device_;
    Connection connection_;
    Slot slot_;
};

}  // namespace kaz::sim
