#pragma once

#include "simulator/bus/scheduler.h"

#include <set>
#include <string>
#include <vector>

namespace kaz::sim {

// The source of the properties of one interface of one object.
struct PropertySource {
    sd_bus* bus = nullptr;
    std::string path;
    std::string interface;
    const sd_bus_vtable* vtable = nullptr;
    void* object = nullptr;
};

// Appends an a{sv} of the named properties, in this order; of all properties if there are no names.
void appendProperties(sd_bus_message* out, const PropertySource& source,
                      const std::vector<std::string>& names);

// Sends PropertiesChanged signals. Changes are collected and sent together when the loop has handled
// everything that is ready. So PropertiesChanged follows the reply to the call that caused it, and all signals
// that are sent directly.
class PropertySignals {
  public:
    // With `ownSignal`, the interface's own signal PropertiesChanged(a{sv}) follows the standard signal.
    PropertySignals(const Scheduler& scheduler, PropertySource source, bool ownSignal)
        : scheduler_(&scheduler), source_(std::move(source)), ownSignal_(ownSignal) {}

    void changed(const std::string& name);

    // Sends the collected changes at once.
    void flush();

    const PropertySource& source() const noexcept { return source_; }

  private:
    const Scheduler* scheduler_;
    PropertySource source_;
    bool ownSignal_;
    std::vector<std::string> names_;
    Timer timer_;
};

}  // namespace kaz::sim
