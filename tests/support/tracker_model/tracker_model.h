#pragma once

#include "communicator/communicator.h"
#include "doubles/fake_clock/fake_clock.h"

#include <wifi/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kaz::test {

// A second implementation of the connection tracker's rules, simple and slow, to compare the tracker with. It first
// decides whether the attempt has ended, and how. Its operations are those of the tracker.
class TrackerModel {
  public:
    explicit TrackerModel(std::shared_ptr<FakeClock> clock) : clock_(std::move(clock)) {}

    void notifyAboutConnectionAttempt(const std::string& ssid);
    void notifyAboutDisconnect();
    void notifyAboutForget(const std::string& ssid);
    void setCurrentNetworkSsid(const std::optional<std::string>& ssid);
    void setScanning(bool scanning);
    void setCurrentBss(const std::optional<wifi::Communicator::BssProperties>& bss);
    void setSupplicantStatus(wifi::Communicator::SupplicantConnectionStatus status);
    void setSignalStrength(int dBm);
    void setNetworkdIsOnline(bool online);
    void setSupplicantState(bool on);
    wifi::ConnectionInfo getConnectionInfo();
    std::optional<std::chrono::milliseconds> getActiveTimeout() const;

    // The log records expected since the last call, each with "warning: " or "debug: " before its text.
    std::vector<std::string> takeTexts() { return std::exchange(texts_, {}); }

  private:
    using TimePoint = FakeClock::TimePoint;

    enum class Fate { waits, timedOut, fellBack, succeeded, wentElsewhere };

    struct Attempt {
        std::string ssid;
        TimePoint since;
        bool sawLinkSetUp = false;
    };

    void begin(const std::string& ssid, wifi::ConnectionInfo::DisconnectReason reason);
    void end(wifi::ConnectionInfo::DisconnectReason reason);
    void update();
    Fate fateOfAttempt();
    void logEnd(Fate fate);
    void followSupplicant();
    void followLink();

    std::shared_ptr<FakeClock> clock_;
    std::optional<Attempt> attempt_;
    std::optional<TimePoint> request_;
    std::optional<wifi::Communicator::BssProperties> bss_;
    TimePoint bssTime_;
    int status_ = 0;
    TimePoint statusTime_;
    bool scanning_ = false;
    bool online_ = false;
    wifi::ConnectionInfo info_;
    std::vector<std::string> texts_;
};

}  // namespace kaz::test
