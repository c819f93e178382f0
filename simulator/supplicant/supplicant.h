#pragma once

#include "simulator/supplicant/interface_object.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

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

    // Makes the interface of the radio, with the stored networks, and removes it. The new one has another path.
    void addInterface();
    void removeInterface();

    // Makes an interface that is listed but does nothing, and removes the newest one of these.
    void addOtherInterface();
    void removeOtherInterface();

    // That of the radio; null while there is none.
    InterfaceObject* interface() noexcept { return interface_.get(); }

  private:
    static const sd_bus_vtable vtable_[];

    std::string newPath();
    void announce(const std::string& path, const PropertySource* properties);
    void remove(const std::string& path);
    void signalRemoved(const std::string& path);

    const Environment& environment_;
    const Neighbourhood& neighbourhood_;
    InterfaceObject::Storage& storage_;
    std::function<void()> stateChanged_;
    Connection connection_;
    Slot slot_;
    std::vector<std::string> paths_;  // of all interfaces, the newest first
    unsigned nextNumber_ = 0;
    std::unique_ptr<InterfaceObject> interface_;
};

}  // namespace kaz::sim
