#pragma once

#include "connection_info/time_provider.h"

#include <wifi/connection_details.h>
#include <wifi/types.h>

#include <chrono>
#include <memory>
#include <optional>

namespace kaz::wifi {

// What the tracker's record alone does not show to a user: that a roam is no disconnect, that an address has not come in
// time, and that the supplicant does not answer. The first two depend on the clock, so look() is called in every idle
// pass. Loop thread only.
class Presentation {
  public:
    // How long a roam may take.
    static constexpr std::chrono::seconds roamLimit{3};

    explicit Presentation(std::shared_ptr<TimeProvider> timeProvider);

    // Zero or less: no limit.
    void setAddressTimeout(std::chrono::milliseconds timeout) { addressTimeout_ = timeout; }

    // Whether the supplicant has left the last call unanswered.
    void setSilent(bool silent) { silent_ = silent; }

    void look(const ConnectionInfo& former, const ConnectionInfo& next);

    ConnectionInfo::Status shownStatus() const { return shown_; }
    Cause trouble() const;

    // The time after which look() must be called again without an event.
    std::optional<std::chrono::milliseconds> remaining() const;

  private:
    using TimePoint = std::chrono::steady_clock::time_point;

    void followRoam(const ConnectionInfo& former, const ConnectionInfo& next);
    void followAddress(const ConnectionInfo& former, const ConnectionInfo& next);

    std::shared_ptr<TimeProvider> timeProvider_;
    std::chrono::milliseconds addressTimeout_{0};
    std::optional<TimePoint> roamEnd_;       // when a roam that goes on is shown as what it is
    std::optional<TimePoint> addressSince_;  // the begin of the present wait for an address
    ConnectionInfo::Status shown_ = ConnectionInfo::Status::disconnected;
    bool live_ = false;
    bool silent_ = false;
    Cause trouble_ = Cause::none;  // with the address
};

}  // namespace kaz::wifi
