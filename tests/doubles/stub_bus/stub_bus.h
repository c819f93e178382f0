#pragma once

#include "base/checked.h"
#include "base/non_copyable.h"
#include "base/sd_bus/handles.h"

#include <systemd/sd-bus.h>

#include <array>

namespace kaz::test {

// A bus connection without a peer, for making messages. Failures throw std::system_error. For one thread.
class StubBus : NonCopyable {
  public:
    StubBus();
    ~StubBus();

    sd_bus* get() const noexcept { return bus_.get(); }

    // A method call without arguments; the caller may append some.
    dbus::MessagePtr message() const;

    // A message with these values, in the form of sd_bus_message_append(), ready to be read.
    template <typename... Values>
    dbus::MessagePtr sealed(const char* types, Values... values) const {
        dbus::MessagePtr made = message();
        checked(sd_bus_message_append(made.get(), types, values...), "sd_bus_message_append");
        seal(made.get());
        return made;
    }

    // Seals a message and rewinds it.
    static void seal(sd_bus_message* message);

  private:
    std::array<int, 2> sockets_{-1, -1};
    dbus::BusPtr bus_;
};

}  // namespace kaz::test
