#pragma once

#include "simulator/bus/connection.h"
#include "simulator/bus/property_signals.h"
#include "simulator/supplicant/bss_table.h"

#include <string>

namespace kaz::sim {

// A BSS on the bus.
class BssObject {
  public:
    // The entry and the scheduler must outlive this.
    BssObject(Connection& connection, const Scheduler& scheduler, std::string path, const Bss& bss);

    const std::string& path() const noexcept { return path_; }
    PropertySignals& properties() noexcept { return properties_; }

  private:
    static const sd_bus_vtable vtable_[];

    const Scheduler& scheduler_;
    const Bss& bss_;
    std::string path_;
    PropertySignals properties_;
    Slot slot_;
};

}  // namespace kaz::sim
