#include "doubles/stub_bus/stub_bus.h"

#include <sys/socket.h>
#include <unistd.h>

namespace kaz::test {

StubBus::StubBus() {
    checked(sd_bus_new(dbus::out(bus_)), "sd_bus_new");
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets_.data()) != 0) {
        throwErrno("socketpair");
    }
    checked(sd_bus_set_fd(bus_.get(), sockets_[0], sockets_[0]), "sd_bus_set_fd");  // the bus closes this end
    checked(sd_bus_start(bus_.get()), "sd_bus_start");
}

StubBus::~StubBus() {
    ::close(sockets_[1]);
}

dbus::MessagePtr StubBus::message() const {
    dbus::MessagePtr made;
    checked(sd_bus_message_new_method_call(bus_.get(), dbus::out(made), "com.example.Nobody", "/",
                                           "com.example.Nothing", "Nothing"),
            "sd_bus_message_new_method_call");
    return made;
}

void StubBus::seal(sd_bus_message* message) {
    checked(sd_bus_message_seal(message, 1, 0), "sd_bus_message_seal");
    checked(sd_bus_message_rewind(message, 1), "sd_bus_message_rewind");
}

}  // namespace kaz::test
