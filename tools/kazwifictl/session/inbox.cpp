#include "kazwifictl/session/inbox.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace kaz::ctl {

Inbox::Inbox() : ready_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (ready_.get() < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

void Inbox::push(Event event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
    ::eventfd_write(ready_.get(), 1);
}

std::optional<Event> Inbox::take() {
    const std::lock_guard lock(mutex_);
    if (events_.empty()) {
        return std::nullopt;
    }
    Event event = std::move(events_.front());
    events_.pop_front();
    if (events_.empty()) {
        eventfd_t count = 0;
        ::eventfd_read(ready_.get(), &count);
    }
    return event;
}

}  // namespace kaz::ctl
