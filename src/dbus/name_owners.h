#pragma once

#include "base/sd_bus/handles.h"
#include "dbus/name_owner.h"

#include <map>
#include <optional>
#include <string>

namespace kaz::dbus {

// The owners of the bus names with subscriptions, on the current connection. For the loop thread.
class NameOwners {
  public:
    // The bus is asked for an unknown owner at most once per pause.
    explicit NameOwners(NameOwner::Clock::duration pause) : pause_(pause) {}

    // Makes this the current connection and tracks every name on it; null means no connection.
    void attach(sd_bus* bus);
    bool attachedTo(const sd_bus* bus) const noexcept { return bus == bus_.get(); }

    // Tracks the name from now on. The reference stays valid.
    NameOwner& follow(const std::string& name);

    // Asks again for the owners whose signals were missed. Returns the time until the next attempt, or nullopt if
    // none is needed.
    std::optional<NameOwner::Clock::duration> recover();

    // Returns once whether signals were missed from owners that are known now.
    bool takeMissed();

  private:
    const NameOwner::Clock::duration pause_;
    BusReference bus_;  // keeps the object alive, so that a new connection cannot have the same address
    std::map<std::string, NameOwner> owners_;
};

}  // namespace kaz::dbus
