#pragma once

#include "support/tracker_model/tracker_event.h"

#include <wifi/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kaz::fuzz {

using test::TrackerEvent;

// The invariants of the connection tracker. They use only the events and the published records, not the tracker's
// rules.
class TrackerPromises {
  public:
    using Records = std::vector<std::string>;

    // Call it after every event, with the records logged during the event.
    void judgeEvent(const TrackerEvent& event, const Records& logged);

    // Call it with the record after the event, if the record was also read after the event before.
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
