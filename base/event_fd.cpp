#include "base/event_fd.h"

#include <sys/eventfd.h>

#include "base/checked.h"

namespace kaz {

EventFd::EventFd() : fd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!fd_.isOpen()) {
        throwErrno("eventfd");
    }
}

void EventFd::set() const noexcept {
    ::eventfd_write(fd_.get(), 1);
}

void EventFd::clear() const noexcept {
    eventfd_t ignored = 0;
    ::eventfd_read(fd_.get(), &ignored);
}

}  // namespace kaz
