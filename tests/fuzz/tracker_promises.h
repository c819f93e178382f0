#pragma once

#include "fuzz/tracker_event.h"

#include <wifi/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kaz::fuzz {

// What holds for the connection tracker whatever happens. Deliberately knows little: it follows the events and what
// the tracker publishes, and not how the tracker comes to it.
class TrackerPromises {
  public:
    using Records = std::vector<std::string>;

    // To be called after every event, with what was logged on its occasion.
    void judgeEvent(const TrackerEvent& event, const Records& logged);

    // To be called with the record that is published after the event, when there was a look after the last one too.
    void judgeRecord(const TrackerEvent& event, const wifi::ConnectionInfo& record,
                     std::chrono::steady_clock::time_point now);

  private:
    void judgeSsid(const wifi::ConnectionInfo& record) const;
    void judgeDisconnect(const TrackerEvent& event, const wifi::ConnectionInfo& record,
                         std::chrono::steady_clock::time_point now) const;

    wifi::ConnectionInfo before_;
    std::string chosenSsid_;              // by the user or the supplicant
    std::optional<std::string> bssSsid_;  // of the last BSS that was known
    bool scanning_ = false;
    bool linkSetUpSeen_ = false;  // since the last attempt began
    bool statusIsKnown_ = true;   // no number was reported that stands for no state
    bool userAsked_ = false;      // for a disconnect
};

}  // namespace kaz::fuzz
