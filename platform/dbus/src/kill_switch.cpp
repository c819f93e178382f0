#include "platform/dbus/kill_switch.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <cerrno>

namespace kaz::dbus {

int KillSwitch::guard(int socket) noexcept {
    const int duplicate = ::fcntl(socket, F_DUPFD_CLOEXEC, 0);
    const int result = duplicate < 0 ? -errno : 0;
    const std::lock_guard lock(mutex_);
    socket_ = FileDescriptor(duplicate);
    if (pulled_) {
        ::shutdown(socket_.get(), SHUT_RDWR);
    }
    return result;
}

void KillSwitch::release() noexcept {
    const std::lock_guard lock(mutex_);
    socket_ = FileDescriptor();
}

void KillSwitch::pull() noexcept {
    const std::lock_guard lock(mutex_);
    pulled_ = true;
    ::shutdown(socket_.get(), SHUT_RDWR);
}

bool KillSwitch::pulled() const noexcept {
    const std::lock_guard lock(mutex_);
    return pulled_;
}

}  // namespace kaz::dbus
