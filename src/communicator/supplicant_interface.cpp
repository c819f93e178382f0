#include "communicator/supplicant_interface.h"

#include "communicator/bus_names.h"
#include "dbus/message_io.h"
#include "dbus/reply.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kaz::wifi {

SupplicantInterface::SupplicantInterface(dbus::Bus& bus) : bus_(bus) {}

bool SupplicantInterface::mayUse(const char* what, log::Level level) const {
    if (attached_) {
        return true;
    }
    log::write(level, "Can't {}, wpa_supplicant isn't running.", fmt::make_format_args(what));
    return false;
}

bool SupplicantInterface::attachSync(bool sameSupplicant) {
    // First, because operations are refused while detached.
    attached_ = true;
    dbus::Reply reply = root().get("Interfaces");
    const auto interfaces = reply.read<std::vector<dbus::OPath>>().value_or(std::vector<dbus::OPath>{});
    log::debug("wpa_supplicant has {} interfaces", interfaces.size());
    if (interfaces.empty()) {
        log::error("wpa_supplicant has no configured interfaces, can't control wifi");
        return false;
    }
    const bool keepsFormer = sameSupplicant && std::any_of(interfaces.begin(), interfaces.end(),
                                                           [this](const dbus::OPath& interface) {
                                                               return interface.str() == former_.str();
                                                           });
    path_ = keepsFormer ? former_ : interfaces.front();
    return true;
}

void SupplicantInterface::detach() {
    if (hasInterface()) {
        former_ = std::exchange(path_, dbus::OPath());
    }
    attached_ = false;
}

void SupplicantInterface::onAdded(InterfaceTask task) {
    subscribe("InterfaceAdded", std::move(task));
}

void SupplicantInterface::onRemoved(InterfaceTask task) {
    subscribe("InterfaceRemoved", std::move(task));
}

void SupplicantInterface::subscribe(const char* member, InterfaceTask task) {
    bus_.subscribe(bus::supplicant::service, dbus::OPath(bus::supplicant::rootPath),
                   bus::supplicant::rootInterface, member, dbus::Bus::Lifetime::permanent,
                   [task = std::move(task)](dbus::MessageDecoder& decoder) {
                       if (const auto interface = dbus::read<dbus::OPath>(decoder)) {
                           task(*interface);
                       }
                   });
}

dbus::RemoteObject SupplicantInterface::root() const {
    return object(bus::supplicant::rootPath, bus::supplicant::rootInterface);
}

dbus::RemoteObject SupplicantInterface::interface() const {
    return object(path_, bus::supplicant::interfaceInterface);
}

dbus::RemoteObject SupplicantInterface::interfaceProperties() const {
    return object(path_, bus::propertiesInterface);
}

dbus::RemoteObject SupplicantInterface::network(const dbus::OPath& path) const {
    return object(path, bus::supplicant::networkInterface);
}

dbus::RemoteObject SupplicantInterface::bssProperties(const dbus::OPath& path) const {
    return object(path, bus::propertiesInterface);
}

dbus::RemoteObject SupplicantInterface::object(const dbus::OPath& path, const char* interface) const {
    return bus_.object(bus::supplicant::service, path, interface);
}

}  // namespace kaz::wifi
