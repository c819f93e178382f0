#pragma once

#include "base/non_copyable.h"
#include "simulator/bus/faults.h"
#include "simulator/bus/scheduler.h"

#include <functional>
#include <map>
#include <string>

namespace kaz::sim {

// Shared by all simulated services.
struct Environment {
    std::string busAddress;
    Scheduler scheduler;
    Faults& faults;
    CallLog& log;
};

// A service's connection to the bus. The destructor closes it at once, as if the process ended.
class Connection : NonCopyable {
  public:
    // Connects and handles calls, but owns no bus name yet. `peer` is the service's name in the call log and in
    // faults; without it, calls are not logged and get no faults. `onCrash` runs for a fault of kind crash.
    Connection(const Environment& environment, std::string peer, std::function<void()> onCrash = nullptr);
    ~Connection();

    void own(const char* name);

    // Sends queued messages. For an orderly end.
    void flush();

    // Adds methods, properties and signals of one interface to one object, until the slot is destroyed.
    [[nodiscard]] Slot serve(const std::string& path, const char* interface, const sd_bus_vtable* vtable,
                             void* object);

    sd_bus* bus() const noexcept { return bus_.get(); }

  private:
    bool received(sd_bus_message* message);
    void suffer(const Fault& fault, sd_bus_message* call);
    void serveLater(const Fault& fault, sd_bus_message* call);
    void forward(sd_bus_message* call);

    const Environment& environment_;
    std::string peer_;
    std::function<void()> onCrash_;
    Bus bus_;
    Bus forwarder_;  // sends delayed calls again
    Slot filter_;
    std::map<unsigned, Timer> delayed_;
    unsigned delays_ = 0;
    Timer crash_;
};

}  // namespace kaz::sim
