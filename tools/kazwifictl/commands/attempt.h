#pragma once

#include <wifi/types.h>

#include <optional>
#include <string>
#include <vector>

#include "kazwifictl/session/snapshot.h"

namespace kaz::ctl {

// A completed stage of connecting, and how long it took.
struct Stage {
    enum class Kind {
        search,   // the supplicant scanned
        join,     // the radio link was set up
        address,  // an address was obtained
    };
    Kind kind = Kind::join;
    Clock::duration took{};
};

// Follows one attempt to connect through what the Manager publishes, from the request to the outcome.
//
// An attempt that failed has the library's own record of why, in failure().
class Attempt {
  public:
    enum class Outcome {
        connected,  // with an address
        failed,     // failure() says why
        lost,       // the link was up and broke before an address was obtained
        other,      // the device is connected to another network
        stopped,    // the supplicant stopped
    };

    // `requested` is the time of the request to connect to `ssid`.
    Attempt(std::string ssid, Clock::time_point requested);
    // One that is under way: `now` shows it.
    Attempt(std::string ssid, const Snapshot& now);

    // Must be called for every change after the request, in order.
    void see(const Snapshot& before, const Snapshot& now);

    // Whether the library has started the attempt.
    bool begun() const { return status_ != Status::disconnected; }

    // Nothing while the attempt is in progress.
    std::optional<Outcome> outcome() const { return outcome_; }

    // Whether the radio link is up, with or without an address. Keeps its value after the attempt failed.
    bool linkIsUp() const { return status_ == Status::connectingIP || status_ == Status::connected; }

    // The stage in progress; nothing before the attempt has begun and after its end.
    std::optional<Stage::Kind> current() const;
    const std::vector<Stage>& stages() const { return stages_; }

    const std::string& ssid() const { return ssid_; }
    // Why it did not succeed. Nothing while it is in progress and after success.
    const wifi::Outcome& failure() const { return failure_; }
    // The network that the device ended up with when the outcome is `other`.
    const std::string& otherSsid() const { return otherSsid_; }
    std::optional<int> signal() const { return signal_; }
    Clock::duration total() const { return last_ - requested_; }

  private:
    using Status = wifi::ConnectionInfo::Status;

    void seeConnection(const Snapshot& now);
    void seeScanning(bool scanning, Clock::time_point time);
    void end(Outcome outcome, Clock::time_point time);
    void endStage(Stage::Kind kind, Clock::time_point time);

    std::string ssid_;
    Clock::time_point requested_;
    Clock::time_point stageBegan_;
    Clock::time_point last_;
    Status status_ = Status::disconnected;
    bool scanning_ = false;
    std::vector<Stage> stages_;
    std::optional<Outcome> outcome_;
    wifi::Outcome failure_;
    std::optional<int> signal_;
    std::string otherSsid_;
};

}  // namespace kaz::ctl
