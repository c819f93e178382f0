#include "simulator/device/systemd.h"

#include <string_view>

#include "simulator/bus/vtable.h"

namespace kaz::sim {
namespace {

constexpr const char* systemdName = "org.freedesktop.systemd1";
constexpr const char* managerPath = "/org/freedesktop/systemd1";
constexpr const char* managerInterface = "org.freedesktop.systemd1.Manager";
constexpr const char* unitPath = "/org/freedesktop/systemd1/unit/wpa_5fsupplicant_2eservice";
constexpr const char* unitInterface = "org.freedesktop.systemd1.Unit";
constexpr const char* serviceInterface = "org.freedesktop.systemd1.Service";

void append(sd_bus_message* out, const char* text) {
    checked(sd_bus_message_append_basic(out, 's', text), "append");
}

std::string jobPath(unsigned job) {
    return std::string(managerPath) + "/job/" + std::to_string(job);
}

void checkUnit(const char* name) {
    if (std::string_view(name) != Systemd::unitName) {
        throw BusError("org.freedesktop.systemd1.NoSuchUnit", "Unit " + std::string(name) + " not found.");
    }
}

void checkMode(const char* mode) {
    static const std::set<std::string_view> modes = {
        "replace", "fail", "isolate", "replace-irreversibly", "ignore-dependencies", "ignore-requirements",
        "flush"};
    if (!modes.contains(mode)) {
        throw BusError(SD_BUS_ERROR_INVALID_ARGS, "Job mode " + std::string(mode) + " invalid");
    }
}

}  // namespace

const sd_bus_vtable Systemd::managerVtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("LoadUnit", "s", "o", vtable::method<&Systemd::loadUnit>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Subscribe", "", "", vtable::method<&Systemd::subscribe>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Unsubscribe", "", "", vtable::method<&Systemd::unsubscribe>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("StartUnit", "ss", "o", vtable::method<&Systemd::startUnit>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("StopUnit", "ss", "o", vtable::method<&Systemd::stopUnit>, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RestartUnit", "ss", "o", vtable::method<&Systemd::restartUnit>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ResetFailedUnit", "s", "", vtable::method<&Systemd::resetFailedUnit>,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("JobNew", "uos", 0),
    SD_BUS_SIGNAL("JobRemoved", "uoss", 0),
    SD_BUS_VTABLE_END,
};

const sd_bus_vtable Systemd::unitVtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Id", "s", vtable::get<&Systemd::id>, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("Description", "s", vtable::get<&Systemd::description>, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("LoadState", "s", vtable::get<&Systemd::loadState>, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("ActiveState", "s", vtable::get<&Systemd::activeState>, 0, vtable::emits),
    SD_BUS_PROPERTY("SubState", "s", vtable::get<&Systemd::subState>, 0, vtable::emits),
    SD_BUS_VTABLE_END,
};

const sd_bus_vtable Systemd::serviceVtable_[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_PROPERTY("Result", "s", vtable::get<&Systemd::result>, 0, vtable::emits),
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

void Systemd::loadUnit(sd_bus_message* call) {
    const char* name = nullptr;
    checked(sd_bus_message_read(call, "s", &name), "read");
    checkUnit(name);
    reply(call, "o", unitPath);
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

void Systemd::startUnit(sd_bus_message* call) {
    runJob(call, &Unit::start);
}

void Systemd::stopUnit(sd_bus_message* call) {
    runJob(call, &Unit::stop);
}

void Systemd::restartUnit(sd_bus_message* call) {
    runJob(call, &Unit::restart);
}

void Systemd::runJob(sd_bus_message* call, void (Unit::*operation)(Unit::Done)) {
    const char* name = nullptr;
    const char* mode = nullptr;
    checked(sd_bus_message_read(call, "ss", &name, &mode), "read");
    checkUnit(name);
    checkMode(mode);
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

void Systemd::resetFailedUnit(sd_bus_message* call) {
    const char* name = nullptr;
    checked(sd_bus_message_read(call, "s", &name), "read");
    checkUnit(name);
    unit_.resetFailed();
    reply(call, "");
}

void Systemd::id(sd_bus_message* out) const {
    append(out, unitName);
}

void Systemd::description(sd_bus_message* out) const {
    append(out, "WPA supplicant");
}

void Systemd::loadState(sd_bus_message* out) const {
    append(out, "loaded");
}

void Systemd::activeState(sd_bus_message* out) const {
    append(out, unit_.states().active.c_str());
}

void Systemd::subState(sd_bus_message* out) const {
    append(out, unit_.states().sub.c_str());
}

void Systemd::result(sd_bus_message* out) const {
    append(out, unit_.states().active == "failed" ? "signal" : "success");
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
