#include "communicator/supplicant_unit.h"

#include "base/log.h"
#include "communicator/bus_names.h"
#include "dbus/message_io.h"
#include "dbus/records.h"
#include "dbus/reply.h"

#include <algorithm>
#include <utility>

namespace kaz::wifi {
namespace {

constexpr const char* noUnit = "/";

}  // namespace

SupplicantUnit::SupplicantUnit(dbus::Bus& bus, Handler handler) : bus_(bus), handler_(std::move(handler)) {}

bool SupplicantUnit::startStopSync(bool start) {
    log::debug("Turning wpa_supplicant {}.", start ? "on" : "off");
    const std::string unit = bus::systemd::supplicantUnit;
    if (start) {
        // Otherwise a unit that failed too often in a row would not start.
        systemd().call("ResetFailedUnit", unit);
    }
    const bool accepted = static_cast<bool>(
        systemd().call(start ? "StartUnit" : "StopUnit", unit, std::string(bus::systemd::jobMode)));
    if (start && accepted && !found_) {
        connectSync();
    }
    return accepted;
}

void SupplicantUnit::connectSync() {
    record_.failure.reset();
    path_ = loadSync();
    const FailureReason unloadedBecause = lastFailure();
    log::debug("Dbus path of wpa_supplicant within systemd daemon is {}", path_.str());
    // systemd sends signals of units only after a client has called this.
    systemd().call("Subscribe");
    subscribe();
    const std::string state = activeStateSync();
    found_ = path_.str() != noUnit && !state.empty();
    if (unloadedBecause != FailureReason::none) {
        unreadBecause_ = unloadedBecause;
    }
    handler_(state);
}

void SupplicantUnit::reportStateSync() {
    handler_(activeStateSync());
}

void SupplicantUnit::onOwnerChangedSync(bool owned) {
    if (owned) {
        connectSync();
    }
}

void SupplicantUnit::onSignalPropertiesChanged(dbus::MessageDecoder& decoder) {
    const auto interface = dbus::read<std::string>(decoder);
    if (!interface || *interface != bus::systemd::unitInterface) {
        return;
    }
    const auto properties = dbus::read<SystemdUnitProperty>(decoder);
    if (properties && properties->activeState) {
        unreadBecause_ = FailureReason::none;
        handler_(*properties->activeState);
    }
}

dbus::OPath SupplicantUnit::loadSync() {
    dbus::Reply reply = systemd().call("LoadUnit", std::string(bus::systemd::supplicantUnit));
    return reply.read<dbus::OPath>().value_or(dbus::OPath(noUnit));
}

std::string SupplicantUnit::activeStateSync() {
    dbus::Reply reply =
        bus_.object(bus::systemd::service, path_, bus::systemd::unitInterface, &record_).get("ActiveState");
    unreadBecause_ = reply ? FailureReason::none : lastFailure();
    return reply.read<std::string>().value_or(std::string());
}

void SupplicantUnit::subscribe() {
    if (std::find(subscribed_.begin(), subscribed_.end(), path_.str()) != subscribed_.end()) {
        return;
    }
    subscribed_.push_back(path_.str());
    bus_.subscribe(bus::systemd::service, path_, bus::propertiesInterface, bus::propertiesChanged,
                   dbus::Bus::Lifetime::permanent,
                   [this](dbus::MessageDecoder& decoder) { onSignalPropertiesChanged(decoder); });
}

dbus::RemoteObject SupplicantUnit::systemd() {
    return bus_.object(bus::systemd::service, bus::systemd::managerPath, bus::systemd::managerInterface,
                       &record_);
}

}  // namespace kaz::wifi
