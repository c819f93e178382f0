#include "unit/platform_dbus/mute_broker.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <utility>

#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

bool becomesReadable(int descriptor) {
    pollfd waited{descriptor, POLLIN, 0};
    return ::poll(&waited, 1, static_cast<int>(std::chrono::milliseconds(timeLimit).count())) == 1;
}

}  // namespace

MuteBroker::MuteBroker()
    : path_(folder_ / "socket"), listener_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(listener_, 8), 0);
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path_).c_str(), 1);
}

MuteBroker::~MuteBroker() {
    hangUp();
    ::close(listener_);
}

bool MuteBroker::hears() {
    if (!becomesReadable(listener_)) {
        return false;
    }
    connection_ = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    char first = 0;
    return connection_ >= 0 && becomesReadable(connection_) && ::read(connection_, &first, 1) == 1;
}

void MuteBroker::hangUp() {
    if (const int connection = std::exchange(connection_, -1); connection >= 0) {
        ::close(connection);
    }
}

}  // namespace kaz::test
