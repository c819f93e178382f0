#pragma once

#include <functional>
#include <map>
#include <string>

#include "simulator/bus/faults.h"
#include "simulator/bus/scheduler.h"

namespace kaz::sim {

// What all simulated services share.
struct Environment {
    std::string busAddress;
    Scheduler scheduler;
    Faults& faults;
    CallLog& log;
};

// A service's connection to the bus. Destroying it drops it at once, as the end of the process would.
class Connection {
  public:
    // Connects and listens, but owns no name yet. `peer` is the service's name in the call log and in faults;
    // without one, calls are neither logged nor disturbed. `onCrash` runs when a crash was ordered.
    Connection(const Environment& environment, std::string peer, std::function<void()> onCrash = nullptr);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    Connection(Connection&&) = delete;
    Connection& operator=(Connection&&) = delete;

    void own(const char* name);

    // Sends what is still queued. For an end in good order.
    void flush();

    // The methods, properties and signals of one interface of one object, until the slot goes.
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
    Bus forwarder_;  // delayed calls come in again through this one
    Slot filter_;
    std::map<unsigned, Timer> delayed_;
    unsigned delays_ = 0;
    Timer crash_;
};

}  // namespace kaz::sim
