#include "support/hand_driven_bus/hand_driven_bus.h"

#include "base/checked.h"
#include "support/waiting/waiting.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>

namespace kaz::test {
namespace {

constexpr const char* busName = "org.freedesktop.DBus";

bool becomesReadable(int descriptor) {
    pollfd waited{descriptor, POLLIN, 0};
    return ::poll(&waited, 1, static_cast<int>(std::chrono::milliseconds(timeLimit).count())) == 1;
}

}  // namespace

HandDrivenBus::HandDrivenBus()
    : path_(folder_ / "socket"), listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(listener_.get(), 8), 0);
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path_).c_str(), 1);
}

bool HandDrivenBus::accept() {
    if (becomesReadable(listener_.get())) {
        connection_ = FileDescriptor(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    }
    return connection_.isOpen();
}

bool HandDrivenBus::hears() {
    char first = 0;
    return accept() && becomesReadable(connection_.get()) && ::read(connection_.get(), &first, 1) == 1;
}

bool HandDrivenBus::letIn() {
    if (!accept()) {
        return false;
    }
    checked(sd_bus_new(dbus::out(client_)), "sd_bus_new");
    const int socket = ::fcntl(connection_.get(), F_DUPFD_CLOEXEC, 0);
    connection_ = FileDescriptor();
    checked(sd_bus_set_fd(client_.get(), socket, socket), "sd_bus_set_fd");
    checked(sd_bus_set_server(client_.get(), 1, sd_id128_t{{1}}), "sd_bus_set_server");
    checked(sd_bus_start(client_.get()), "sd_bus_start");
    return answer(1) == std::vector<std::string>{"Hello"};
}

std::vector<std::string> HandDrivenBus::answer(std::size_t calls) {
    std::vector<std::string> members;
    while (members.size() < calls) {
        dbus::MessagePtr call;
        const int processed = sd_bus_process(client_.get(), dbus::out(call));
        if (call) {
            members.push_back(reply(call.get()));
        } else if (processed < 0 ||
                   (processed == 0 &&
                    sd_bus_wait(client_.get(),
                                static_cast<uint64_t>(std::chrono::microseconds(timeLimit).count())) <= 0)) {
            break;
        }
    }
    sd_bus_flush(client_.get());
    return members;
}

std::string HandDrivenBus::reply(sd_bus_message* call) {
    const std::string member = sd_bus_message_get_member(call);
    if (refused_.contains(member)) {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_LIMITS_EXCEEDED, "refused");
    } else if (member == "Hello") {
        sd_bus_reply_method_return(call, "s", ":1.1");
    } else if (member == "GetNameOwner") {
        sd_bus_reply_method_return(call, "s", owner);
    } else {
        sd_bus_reply_method_return(call, "");
    }
    return member;
}

void HandDrivenBus::emitOwnerChange(const std::string& name, const std::string& former,
                                    const std::string& present) {
    dbus::MessagePtr signal;
    checked(sd_bus_message_new_signal(client_.get(), dbus::out(signal), "/org/freedesktop/DBus", busName,
                                      "NameOwnerChanged"),
            "sd_bus_message_new_signal");
    checked(sd_bus_message_set_sender(signal.get(), busName), "sd_bus_message_set_sender");
    checked(sd_bus_message_append(signal.get(), "sss", name.c_str(), former.c_str(), present.c_str()),
            "sd_bus_message_append");
    checked(sd_bus_send(client_.get(), signal.get(), nullptr), "sd_bus_send");
    checked(sd_bus_flush(client_.get()), "sd_bus_flush");
}

void HandDrivenBus::hangUp() {
    client_.reset();
    connection_ = FileDescriptor();
}

}  // namespace kaz::test
