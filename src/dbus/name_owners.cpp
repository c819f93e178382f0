#include "dbus/name_owners.h"

namespace kaz::dbus {

void NameOwners::attach(sd_bus* bus) {
    for (auto& [name, owner] : owners_) {
        owner.detach();
    }
    bus_.reset(sd_bus_ref(bus));
    if (bus == nullptr) {
        return;
    }
    for (auto& [name, owner] : owners_) {
        owner.attach(bus);
    }
}

NameOwner& NameOwners::follow(const std::string& name) {
    NameOwner& owner = owners_.try_emplace(name, name).first->second;
    if (bus_) {
        owner.attach(bus_.get());
    }
    return owner;
}

}  // namespace kaz::dbus
