#pragma once

#include "communicator/communicator.h"

#include <wifi/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace kaz::fuzz {

// What the connection tracker has to publish, reckoned from the facts it was told, with its operations. The times are
// handed in. Three kinds of reasoning follow one another when the record is settled: is the attempt over, what does
// the supplicant say, how strong is the signal.
class TrackerModel {
  public:
    using Time = std::chrono::steady_clock::time_point;
    using Bss = wifi::Communicator::BssProperties;
    using Status = wifi::Communicator::SupplicantConnectionStatus;

    void userConnects(const std::string& ssid, Time now) { begin(ssid, Cause::causedByUser, now); }
    void userDisconnects(Time now);
    void userForgets(const std::string& ssid, Time now);
    void supplicantSelects(const std::optional<std::string>& ssid, Time now);
    void scanning(bool runs, Time now);
    void bss(const std::optional<Bss>& bss, Time now);
    void status(Status status, Time now);
    void signal(int dBm, Time now);
    void online(bool online, Time now);
    void supplicantCame() { info_ = {}; }
    void supplicantWent(Time now);
    void settle(Time now);

    const wifi::ConnectionInfo& info() const { return info_; }

    // What is left of the attempt's time, unless that stands still.
    std::optional<std::chrono::milliseconds> timeLeft(Time now) const;

    // What the log has to say since the last time this was asked for.
    std::vector<std::string> takeLog();

  private:
    using Cause = wifi::ConnectionInfo::DisconnectReason;

    struct Attempt {
        std::string ssid;
        Time since;
        bool linkWasSetUp = false;
    };

    // A report and when it came.
    template <typename T>
    struct Report {
        T value{};
        Time at;
    };

    void begin(const std::string& ssid, Cause cause, Time now);
    void drop(Cause cause, Time now);
    void record(Cause cause, Time now);
    bool isLive() const { return info_.status != wifi::ConnectionInfo::Status::disconnected; }
    bool attemptIsOver(Time now);
    bool attemptMeetsItsEnd();
    void follow(Time now);
    void followLink(wifi::ConnectionInfo::Status status, Time now);

    std::optional<Attempt> attempt_;
    std::optional<Time> request_;
    Report<std::optional<Bss>> bss_;
    Report<Status> status_;
    bool scanning_ = false;
    bool online_ = false;
    wifi::ConnectionInfo info_;
    std::vector<std::string> log_;
};

}  // namespace kaz::fuzz
