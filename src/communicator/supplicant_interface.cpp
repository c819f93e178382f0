#include "communicator/supplicant_interface.h"

#include "communicator/bus_names.h"
#include "dbus/message_io.h"
#include "dbus/records.h"
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
    const dbus::OPath* const chosen = choose(interfaces, sameSupplicant);
    if (chosen == nullptr) {
        log::error("wpa_supplicant has removed the interface in use, can't control wifi");
        return false;
    }
    path_ = *chosen;
    return true;
}

const dbus::OPath* SupplicantInterface::choose(const std::vector<dbus::OPath>& interfaces,
                                               bool sameSupplicant) const {
    const auto find = [&](const auto& fits) {
        const auto found = std::find_if(interfaces.begin(), interfaces.end(), fits);
        return found == interfaces.end() ? nullptr : &*found;
    };
    const auto isFormer = [this](const dbus::OPath& one) { return one.str() == former_.str(); };
    if (const dbus::OPath* const former = sameSupplicant ? find(isFormer) : nullptr) {
        return former;
    }
    return find([this](const dbus::OPath& one) { return !foreign_.contains(one.str()); });
}

void SupplicantInterface::detach() {
    if (hasInterface()) {
        former_ = std::exchange(path_, dbus::OPath());
    }
    attached_ = false;
}

void SupplicantInterface::noteName(const std::string& name) {
    if (name_.empty()) {
        name_ = name;
    }
}

void SupplicantInterface::addForeign(const dbus::OPath& interface) {
    foreign_.insert(interface.str());
}

void SupplicantInterface::forget() {
    former_ = dbus::OPath();
    name_.clear();
    foreign_.clear();
}

void SupplicantInterface::onAdded(
    std::function<void(const dbus::OPath& interface, const std::string& name)> task) {
    subscribe("InterfaceAdded", [task = std::move(task)](dbus::MessageDecoder& decoder) {
        if (const auto interface = dbus::read<dbus::OPath>(decoder)) {
            const auto properties = dbus::read<dbus::SupplicantInterfaceProperties>(decoder);
            task(*interface, properties ? properties->ifname.value_or("") : std::string());
        }
    });
}

void SupplicantInterface::onRemoved(std::function<void(const dbus::OPath& interface)> task) {
    subscribe("InterfaceRemoved", [this, task = std::move(task)](dbus::MessageDecoder& decoder) {
        if (const auto interface = dbus::read<dbus::OPath>(decoder)) {
            foreign_.erase(interface->str());
            task(*interface);
        }
    });
}

void SupplicantInterface::subscribe(const char* member, std::function<void(dbus::MessageDecoder&)> handler) {
    bus_.subscribe(bus::supplicant::service, dbus::OPath(bus::supplicant::rootPath),
                   bus::supplicant::rootInterface, member, dbus::Bus::Lifetime::permanent,
                   std::move(handler));
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
