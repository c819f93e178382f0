#pragma once

#include "simulator/bus/connection.h"
#include "simulator/bus/property_signals.h"
#include "simulator/device/unit.h"

#include <set>
#include <string>

namespace kaz::sim {

// systemd's manager with the one unit of this device. Like the real one, it sends signals only after a
// Subscribe.
class Systemd {
  public:
    static constexpr const char* unitName = "wpa_supplicant.service";

    Systemd(const Environment& environment, const Times& times, ServiceProcess& process);

    Unit& unit() noexcept { return unit_; }

  private:
    static const sd_bus_vtable managerVtable_[];
    static const sd_bus_vtable unitVtable_[];
    static const sd_bus_vtable serviceVtable_[];

    void subscribe(sd_bus_message* call);
    void unsubscribe(sd_bus_message* call);
    void runJob(sd_bus_message* call, void (Unit::*operation)(Unit::Done));
    void jobRemoved(unsigned job, bool done);
    void unitChanged();

    Connection connection_;
    Unit unit_;
    PropertySignals serviceSignals_;
    PropertySignals unitSignals_;
    Slot managerSlot_;
    Slot unitSlot_;
    Slot serviceSlot_;
    std::set<std::string> subscribers_;
    unsigned jobs_ = 0;
};

}  // namespace kaz::sim
