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

// The rules of the connection tracker told a second time, from the point of view of an attempt's fate, to be
// compared with the tracker itself. Plain and slow; the operations have the tracker's names and meanings.
class TrackerModel {
  public:
    explicit TrackerModel(std::shared_ptr<FakeClock> clock) : clock_(std::move(clock)) {}

    void notifyAboutConnectionAttempt(const std::string& ssid);
    void notifyAboutDisconnect();
    void notifyAboutForget(const std::string& ssid);
    void setCurrentNetworkSsid(const std::optional<std::string>& ssid);
    void setScanning(bool scanning);
    void setCurrentBss(const std::optional<wifi::Communicator::BssProperties>& bss);
    void setSupplicantStatus(int status);
    void setSignalStrength(int dBm);
    void setNetworkdIsOnline(bool online);
    void setSupplicantState(bool on);
    wifi::ConnectionInfo getConnectionInfo();
    std::optional<std::chrono::milliseconds> getActiveTimeout() const;

    // The texts that were to be logged, each with "warning: " or "debug: " before it.
    const std::vector<std::string>& texts() const { return texts_; }

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
    void mourn(Fate fate);
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
