#pragma once

#include "simulator/bus/connection.h"
#include "simulator/bus/property_signals.h"
#include "simulator/supplicant/network_list.h"

#include <functional>
#include <string>

namespace kaz::sim {

// A configured network on the bus.
class NetworkObject {
  public:
    static std::string pathOf(const std::string& interfacePath, unsigned id);

    // All references must outlive this.
    NetworkObject(Connection& connection, const Scheduler& scheduler, std::string path, Network& network,
                  const std::vector<std::string>& eapMethods, std::function<void(bool enabled)> setEnabled);

    const std::string& path() const noexcept { return path_; }
    PropertySignals& properties() noexcept { return properties_; }

  private:
    static const sd_bus_vtable vtable_[];

    Network& network_;
    const std::vector<std::string>& eapMethods_;
    std::function<void(bool)> setEnabled_;
    std::string path_;
    PropertySignals properties_;
    Slot slot_;
};

}  // namespace kaz::sim
