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

bool SupplicantInterface::attachSync(bool sameSupplicant, const dbus::OPath& preferred) {
    // First, because operations are refused while detached.
    attached_ = true;
    record_.failure.reset();
    dbus::Reply reply = root().get("Interfaces");
    trouble_ = reply ? StackTrouble{StackTrouble::Place::interface, FailureReason::none}
                     : StackTrouble{StackTrouble::Place::supplicant, lastFailure()};
    const auto interfaces = reply.read<std::vector<dbus::OPath>>().value_or(std::vector<dbus::OPath>{});
    log::debug("wpa_supplicant has {} interfaces", interfaces.size());
    owner_ = reply.sender();
    listed_.clear();
    for (const dbus::OPath& interface : interfaces) {
        listed_.insert(interface.str());
    }
    if (interfaces.empty()) {
        log::error("wpa_supplicant has no configured interfaces, can't control wifi");
        return false;
    }
    const dbus::OPath* const chosen = choose(interfaces, sameSupplicant, preferred);
    if (chosen == nullptr) {
        log::error("wpa_supplicant has removed the interface in use, can't control wifi");
        return false;
    }
    path_ = *chosen;
    trouble_ = {};
    return true;
}

const dbus::OPath* SupplicantInterface::choose(const std::vector<dbus::OPath>& interfaces,
                                               bool sameSupplicant, const dbus::OPath& preferred) const {
    const auto find = [&](const auto& fits) {
        const auto found = std::find_if(interfaces.begin(), interfaces.end(), fits);
        return found == interfaces.end() ? nullptr : &*found;
    };
    const auto is = [](const dbus::OPath& path) {
        return [&path](const dbus::OPath& one) { return one.str() == path.str(); };
    };
    if (const dbus::OPath* const former = sameSupplicant ? find(is(former_)) : nullptr) {
        return former;
    }
    if (const dbus::OPath* const added = find(is(preferred))) {
        return added;
    }
    return find([this](const dbus::OPath& one) { return !foreign_.contains(one.str()); });
}

bool SupplicantInterface::isFromPresentOwner() const {
    return !owner_.empty() && owner_ == bus_.ownerOf(bus::supplicant::service);
}

void SupplicantInterface::detach() {
    if (hasInterface()) {
        former_ = std::exchange(path_, dbus::OPath());
    }
    owner_.clear();
    attached_ = false;
    record_.silent = false;
    trouble_ = {};
}

void SupplicantInterface::noteName(const std::string& name) {
    if (name_.empty()) {
        name_ = name;
    }
}

void SupplicantInterface::noteAdded(const dbus::OPath& interface) {
    if (!listed_.contains(interface.str())) {
        foreign_.insert(interface.str());
    }
}

void SupplicantInterface::forget() {
    former_ = dbus::OPath();
    name_.clear();
    listed_.clear();
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
            listed_.erase(interface->str());
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
    return bus_.object(bus::supplicant::service, path, interface, &record_);
}

}  // namespace kaz::wifi
