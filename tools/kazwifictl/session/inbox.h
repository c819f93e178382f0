#pragma once

#include <deque>
#include <mutex>
#include <optional>

#include "kazwifictl/process/file_descriptor.h"
#include "kazwifictl/session/event.h"

namespace kaz::ctl {

// Carries events from the device's thread to the one that waits for them.
class Inbox {
  public:
    // Throws std::system_error when no descriptor is left.
    Inbox();

    // Any thread.
    void push(Event event);
    std::optional<Event> take();

    // Readable while there is something to take.
    int fd() const { return ready_.get(); }

  private:
    FileDescriptor ready_;
    std::mutex mutex_;
    std::deque<Event> events_;
};

}  // namespace kaz::ctl
