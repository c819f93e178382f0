#pragma once

#include "base/sd_bus/handles.h"
#include "dbus/name_owner.h"

#include <map>
#include <string>

namespace kaz::dbus {

// The owners of the bus names whose signals the library takes, on the present connection. Loop thread.
class NameOwners {
  public:
    // Makes this the present connection and follows every name on it; null means none.
    void attach(sd_bus* bus);
    bool attachedTo(const sd_bus* bus) const noexcept { return bus == bus_.get(); }

    // Follows the name from now on. The reference stays valid.
    NameOwner& follow(const std::string& name);

  private:
    BusReference bus_;  // held, so that no other connection can come to lie at its address
    std::map<std::string, NameOwner> owners_;
};

}  // namespace kaz::dbus
