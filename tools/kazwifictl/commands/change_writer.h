#pragma once

#include <chrono>
#include <string>

#include "kazwifictl/output/output.h"
#include "kazwifictl/session/snapshot.h"

namespace kaz::ctl {

// Describes changes as text or as JSON, one line per change.
class ChangeWriter {
  public:
    using WallClock = std::chrono::system_clock;

    explicit ChangeWriter(const Output& output) : output_(output) {}

    // The lines for the first state of a monitor.
    std::string begin(const Snapshot& now, WallClock::time_point time);

    // The lines for what has changed. Empty when nothing that is shown has changed.
    std::string change(const Snapshot& before, const Snapshot& now, WallClock::time_point time);

    // The changes for the prompt, whose user has not asked for them: Wi-Fi on or off, and a connection that begins,
    // changes or ends while Wi-Fi is on.
    std::string news(const Snapshot& before, const Snapshot& now, WallClock::time_point time);

  private:
    const Output& output_;
};

}  // namespace kaz::ctl
