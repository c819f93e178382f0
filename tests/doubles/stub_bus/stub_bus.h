#pragma once

#include "base/non_copyable.h"

#include "base/sd_bus/handles.h"

#include <systemd/sd-bus.h>

#include <array>

namespace kaz::test {

// A bus connection with nobody at the other end: good for making messages, not for sending them. What cannot
// be made throws std::runtime_error. To be used by one thread.
class StubBus : NonCopyable {
  public:
    StubBus();
    ~StubBus();

    sd_bus* get() const noexcept { return bus_.get(); }

    // A method call without arguments, still open for them.
    dbus::MessagePtr message() const;

    // A message with these values, as sd_bus_message_append() takes them, ready to be read.
    template <typename... Values>
    dbus::MessagePtr sealed(const char* types, Values... values) const {
        dbus::MessagePtr made = message();
        checked(sd_bus_message_append(made.get(), types, values...));
        seal(made.get());
        return made;
    }

    // Ends the writing of a message and goes to its beginning.
    static void seal(sd_bus_message* message);

  private:
    static void checked(int result);

    std::array<int, 2> sockets_{-1, -1};
    dbus::BusPtr bus_;
};

}  // namespace kaz::test
