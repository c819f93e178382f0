#include "dbus/name_owners.h"

#include <algorithm>

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
    NameOwner& owner = owners_.try_emplace(name, name, pause_).first->second;
    if (bus_) {
        owner.attach(bus_.get());
    }
    return owner;
}

std::optional<NameOwner::Clock::duration> NameOwners::recover() {
    std::optional<NameOwner::Clock::duration> next;
    for (auto& [name, owner] : owners_) {
        if (const auto left = owner.recover(bus_.get())) {
            next = next ? std::min(*next, *left) : left;
        }
    }
    return next;
}

bool NameOwners::takeMissed() {
    bool missed = false;
    for (auto& [name, owner] : owners_) {
        missed = owner.takeMissed() || missed;
    }
    return missed;
}

}  // namespace kaz::dbus
