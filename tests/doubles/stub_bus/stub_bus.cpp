#include "doubles/stub_bus/stub_bus.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>

namespace kaz::test {

StubBus::StubBus() {
    sd_bus* bus = nullptr;
    checked(sd_bus_new(&bus));
    bus_.reset(bus);
    checked(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets_.data()) == 0
                ? 0
                : -errno);
    checked(sd_bus_set_fd(bus, sockets_[0], sockets_[0]));  // the bus closes this end
    checked(sd_bus_start(bus));
}

StubBus::~StubBus() {
    ::close(sockets_[1]);
}

dbus::MessagePtr StubBus::message() const {
    sd_bus_message* made = nullptr;
    checked(sd_bus_message_new_method_call(bus_.get(), &made, "com.example.Nobody", "/",
                                           "com.example.Nothing", "Nothing"));
    return dbus::MessagePtr(made);
}

void StubBus::seal(sd_bus_message* message) {
    checked(sd_bus_message_seal(message, 1, 0));
    checked(sd_bus_message_rewind(message, 1));
}

void StubBus::checked(int result) {
    if (result < 0) {
        throw std::runtime_error("cannot make the message: " + std::to_string(result));
    }
}

}  // namespace kaz::test
