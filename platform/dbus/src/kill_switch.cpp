#include "kill_switch.h"

#include <fcntl.h>
#include <sys/socket.h>

namespace kaz::dbus {

void KillSwitch::guard(int socket) noexcept {
    const std::lock_guard lock(mutex_);
    socket_ = Fd(::fcntl(socket, F_DUPFD_CLOEXEC, 0));
    if (pulled_) {
        ::shutdown(socket_.get(), SHUT_RDWR);
    }
}

void KillSwitch::release() noexcept {
    const std::lock_guard lock(mutex_);
    socket_ = Fd();
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
