#pragma once

#include <functional>

#include "simulator/supplicant/interface_object.h"

namespace kaz::sim {

// The supplicant daemon while it runs. Making one is starting it; destroying it is killing it.
class Supplicant {
  public:
    // Everything referred to outlives this. `stateChanged` follows the interface's State; `crash` is called
    // from the loop when a fault orders one and destroys the supplicant.
    Supplicant(const Environment& environment, const Neighbourhood& neighbourhood,
               InterfaceObject::Storage& storage, std::function<void()> stateChanged,
               std::function<void()> crash);

    // Says good-bye on the bus, as the daemon does when it is asked to end.
    void withdraw();

    Station& station() noexcept { return interface_.station(); }
    InterfaceObject& interface() noexcept { return interface_; }

  private:
    static const sd_bus_vtable vtable_[];

    void getInterface(sd_bus_message* call);
    void capabilities(sd_bus_message* out) const;
    void eapMethods(sd_bus_message* out) const;
    void interfaces(sd_bus_message* out) const;

    const Neighbourhood& neighbourhood_;
    Connection connection_;
    Slot slot_;
    InterfaceObject interface_;
};

}  // namespace kaz::sim
