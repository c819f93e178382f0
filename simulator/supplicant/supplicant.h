#pragma once

#include "simulator/supplicant/interface_object.h"

#include <functional>

namespace kaz::sim {

// The supplicant daemon while it runs. The constructor starts it; the destructor kills it.
class Supplicant {
  public:
    // All references must outlive this. `stateChanged` is called for each State of the interface. For a fault
    // of kind crash, the loop calls `crash`, which destroys the supplicant.
    Supplicant(const Environment& environment, const Neighbourhood& neighbourhood,
               InterfaceObject::Storage& storage, std::function<void()> stateChanged,
               std::function<void()> crash);

    // Sends the signals that the daemon sends when it is terminated.
    void withdraw();

    Station& station() noexcept { return interface_.station(); }
    InterfaceObject& interface() noexcept { return interface_; }

  private:
    static const sd_bus_vtable vtable_[];

    const Neighbourhood& neighbourhood_;
    Connection connection_;
    Slot slot_;
    InterfaceObject interface_;
};

}  // namespace kaz::sim
