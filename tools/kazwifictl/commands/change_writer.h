#pragma once

#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include "kazwifictl/output/output.h"
#include "kazwifictl/session/snapshot.h"

namespace kaz::ctl {

// Describes changes as text or as JSON, one line per change.
class ChangeWriter {
  public:
    using WallClock = std::chrono::system_clock;

    // `trouble` says why the supplicant cannot be used. Without it, a line only says that it does not run.
    explicit ChangeWriter(const Output& output, std::function<std::string(const Snapshot&)> trouble = {})
        : output_(output), trouble_(std::move(trouble)) {}

    // The lines for the first state of a monitor.
    std::string begin(const Snapshot& now, WallClock::time_point time);

    // The lines for what has changed. Empty when nothing that is shown has changed.
    std::string change(const Snapshot& before, const Snapshot& now, WallClock::time_point time);

    // The changes for the prompt, whose user has not asked for them: Wi-Fi on or off, and a connection that begins,
    // changes or ends while Wi-Fi is on.
    std::string news(const Snapshot& before, const Snapshot& now, WallClock::time_point time);

  private:
    std::string trouble(const Snapshot& now) const;

    const Output& output_;
    std::function<std::string(const Snapshot&)> trouble_;
    // The list leaves out the network in use. It has not disappeared.
    std::set<std::string> used_;
};

}  // namespace kaz::ctl
