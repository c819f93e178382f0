#include "simulator/device/systemd.h"

#include "simulator/bus/vtable.h"

#include <cstdint>
#include <string_view>

namespace kaz::sim {
namespace {

constexpr const char* systemdName = "org.freedesktop.systemd1";
constexpr const char* managerPath = "/org/freedesktop/systemd1";
constexpr const char* managerInterface = "org.freedesktop.systemd1.Manager";
constexpr const char* unitPath = "/org/freedesktop/systemd1/unit/wpa_5fsupplicant_2eservice";
constexpr const char* unitInterface = "org.freedesktop.systemd1.Unit";
constexpr const char* serviceInterface = "org.freedesktop.systemd1.Service";

std::string jobPath(unsigned job) {
    return std::string(managerPath) + "/job/" + std::to_string(job);
}

void checkUnit(const std::string& name) {
    if (name != Systemd::unitName) {
        throw BusError("org.freedesktop.systemd1.NoSuchUnit", "Unit " + name + " not found.");
    }
}

void checkMode(const std::string& mode) {
    static const std::set<std::string_view> modes = {
        "replace", "fail", "isolate", "replace-irreversibly", "ignore-dependencies", "ignore-requirements",
        "flush"};
    if (!modes.contains(mode)) {
        throw BusError(SD_BUS_ERROR_INVALID_ARGS, "Job mode " + mode + " invalid");
    }
}

using vtable::method;
using vtable::property;
using vtable::rawMethod;

constexpr auto isConstant = SD_BUS_VTABLE_PROPERTY_CONST;

// Of the unit: one command that was never started, as far as it tells.
int appendCommand(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* /*property*/,
                  sd_bus_message* message, void* /*systemd*/, sd_bus_error* /*error*/) noexcept {
    constexpr const char* program = "/sbin/wpa_supplicant";
    constexpr std::uint64_t never = 0;
    return sd_bus_message_append(message, "a(sasbttttuii)", 1, program, 4, program, "-u", "-iwlan0",
                                 "-c/etc/wpa_supplicant/wpa_supplicant.conf", 0, never, never, never, never,
                                 0U, 0, 0);
}

}  // namespace

const sd_bus_vtable Systemd::managerVtable_[] = {
    SD_BUS_VTABLE_START(0),
    method("LoadUnit",
           [](Systemd&, const std::string& name) {
               checkUnit(name);
               return ObjectPath(unitPath);
           }),
    rawMethod("Subscribe", "", "", [](Systemd& s, sd_bus_message* call) { s.subscribe(call); }),
    rawMethod("Unsubscribe", "", "", [](Systemd& s, sd_bus_message* call) { s.unsubscribe(call); }),
    rawMethod("StartUnit", "ss", "o", [](Systemd& s, sd_bus_message* call) { s.runJob(call, &Unit::start); }),
    rawMethod("StopUnit", "ss", "o", [](Systemd& s, sd_bus_message* call) { s.runJob(call, &Unit::stop); }),
    rawMethod("RestartUnit", "ss", "o",
              [](Systemd& s, sd_bus_message* call) { s.runJob(call, &Unit::restart); }),
    method("ResetFailedUnit",
           [](Systemd& s, const std::string& name) {
               checkUnit(name);
               s.unit_.resetFailed();
           }),
    SD_BUS_SIGNAL("JobNew", "uos", 0),
    SD_BUS_SIGNAL("JobRemoved", "uoss", 0),
    SD_BUS_VTABLE_END,
};

const sd_bus_vtable Systemd::unitVtable_[] = {
    SD_BUS_VTABLE_START(0),
    property<isConstant>("Id", [](const Systemd&) { return unitName; }),
    property<isConstant>("Description", [](const Systemd&) { return "WPA supplicant"; }),
    property<isConstant>("LoadState", [](const Systemd&) { return "loaded"; }),
    property("ActiveState", [](const Systemd& s) { return s.unit_.states().active; }),
    property("SubState", [](const Systemd& s) { return s.unit_.states().sub; }),
    SD_BUS_VTABLE_END,
};

const sd_bus_vtable Systemd::serviceVtable_[] = {
    SD_BUS_VTABLE_START(0),
    property("Result",
             [](const Systemd& s) { return s.unit_.states().active == "failed" ? "signal" : "success"; }),
    property<isConstant>("Type", [](const Systemd&) { return "dbus"; }),
    property<isConstant>("BusName", [](const Systemd&) { return "fi.w1.wpa_supplicant1"; }),
    SD_BUS_PROPERTY("ExecStart", "a(sasbttttuii)", &appendCommand, 0, isConstant),
    SD_BUS_VTABLE_END,
};

Systemd::Systemd(const Environment& environment, const Times& times, ServiceProcess& process)
    : connection_(environment, "systemd"),
      unit_(environment.scheduler, times, process, [this] { unitChanged(); }),
      serviceSignals_(environment.scheduler,
                      {connection_.bus(), unitPath, serviceInterface, serviceVtable_, this}, false),
      unitSignals_(environment.scheduler, {connection_.bus(), unitPath, unitInterface, unitVtable_, this},
                   false),
      managerSlot_(connection_.serve(managerPath, managerInterface, managerVtable_, this)),
      unitSlot_(connection_.serve(unitPath, unitInterface, unitVtable_, this)),
      serviceSlot_(connection_.serve(unitPath, serviceInterface, serviceVtable_, this)) {
    connection_.own(systemdName);
}

void Systemd::subscribe(sd_bus_message* call) {
    if (!subscribers_.insert(sd_bus_message_get_sender(call)).second) {
        throw BusError("org.freedesktop.systemd1.AlreadySubscribed", "Client is already subscribed.");
    }
    reply(call, "");
}

void Systemd::unsubscribe(sd_bus_message* call) {
    if (subscribers_.erase(sd_bus_message_get_sender(call)) == 0) {
        throw BusError("org.freedesktop.systemd1.NotSubscribed", "Client is not subscribed.");
    }
    reply(call, "");
}

void Systemd::runJob(sd_bus_message* call, void (Unit::*operation)(Unit::Done)) {
    checkUnit(Wire<std::string>::read(call));
    checkMode(Wire<std::string>::read(call));
    const unsigned job = ++jobs_;
    if (!subscribers_.empty()) {
        checked(sd_bus_emit_signal(connection_.bus(), managerPath, managerInterface, "JobNew", "uos", job,
                                   jobPath(job).c_str(), unitName),
                "JobNew");
    }
    reply(call, "o", jobPath(job).c_str());
    (unit_.*operation)([this, job](bool done) { jobRemoved(job, done); });
}

void Systemd::jobRemoved(unsigned job, bool done) {
    unitSignals_.flush();
    if (!subscribers_.empty()) {
        checked(sd_bus_emit_signal(connection_.bus(), managerPath, managerInterface, "JobRemoved", "uoss",
                                   job, jobPath(job).c_str(), unitName, done ? "done" : "canceled"),
                "JobRemoved");
    }
}

void Systemd::unitChanged() {
    if (subscribers_.empty()) {
        return;
    }
    serviceSignals_.changed("Result");
    serviceSignals_.flush();
    unitSignals_.changed("ActiveState");
    unitSignals_.changed("SubState");
    unitSignals_.flush();
}

}  // namespace kaz::sim
