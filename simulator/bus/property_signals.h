#pragma once

#include <set>
#include <string>
#include <vector>

#include "simulator/bus/scheduler.h"

namespace kaz::sim {

// Where the properties of one interface of one object are found.
struct PropertySource {
    sd_bus* bus = nullptr;
    std::string path;
    std::string interface;
    const sd_bus_vtable* vtable = nullptr;
    void* object = nullptr;
};

// Appends an a{sv} of the named properties, in that order; of all when there are no names.
void appendProperties(sd_bus_message* out, const PropertySource& source,
                      const std::vector<std::string>& names);

// Tells the bus which properties changed. Changes are collected and sent together once the loop has dealt
// with what is ready, so after the reply to the call that caused them and after signals sent directly.
class PropertySignals {
  public:
    // With `ownSignal` the interface's own signal PropertiesChanged(a{sv}) follows the standard one.
    PropertySignals(const Scheduler& scheduler, PropertySource source, bool ownSignal)
        : scheduler_(&scheduler), source_(std::move(source)), ownSignal_(ownSignal) {}

    void changed(const std::string& name);

    // Sends at once what was collected.
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
