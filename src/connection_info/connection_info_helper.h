// The connection tracker: combines facts about the link into one consistent ConnectionInfo.
//
// The facts have three sources. The user requests to connect, to disconnect or to forget. The supplicant
// starts and stops, selects a network, changes its connection status, and moves between access points (BSSs).
// networkd reports whether the link has an address.
//
// 1. Without a request, the published status follows the supplicant. Connecting becomes `connectingWifi`.
//    Connected becomes `connectingIP` or, if networkd is online, `connected`. All lower states become
//    `disconnected`. The SSID is that of the current BSS.
//
// 2. An attempt begins when the user requests a network or the supplicant selects one by itself. From then on
//    the published status is `connectingWifi` with its SSID. Reports older than the attempt are ignored,
//    because they are about the former network. The attempt ends when
//      - the supplicant is connected to the requested SSID: success;
//      - it sets up the link to another SSID: that one is published;
//      - it leaves link set-up without a connection: failure;
//      - nothing happens for 2 s: failure. The timeout is paused during a scan and restarts at zero after it.
//        It stops for good when link set-up begins, because the supplicant then reports how that ends;
//      - another attempt begins, the user disconnects, or the supplicant stops.
//    After that the status follows the supplicant again, as in 1.
//
// 3. A disconnect request is published at once. Supplicant reports older than the request are ignored, so
//    that a late "still connected" does not undo it.
//
// 4. When a connection or an unsuccessful attempt ends, the record names the network, the time, and whether
//    the user or the system caused the end. These fields stay until the next end, or until the supplicant
//    starts or stops.
#pragma once

#include "communicator/communicator.h"
#include "connection_info/time_provider.h"

#include <wifi/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace kaz::wifi {

// Not thread-safe: for the loop thread only.
class ConnectionInfoHelper {
  public:
    // How long the supplicant may take to react to an attempt.
    static constexpr std::chrono::nanoseconds AttemptTimeout = std::chrono::seconds(2);

    explicit ConnectionInfoHelper(std::shared_ptr<TimeProvider> timeProvider);

    void notifyAboutConnectionAttempt(std::string ssid);
    void notifyAboutDisconnect();

    // Forgetting the network in use is a disconnect. If the system caused the last disconnect,
    // forgetting its network records the user as the cause.
    void notifyAboutForget(const std::string& ssid);

    // The supplicant selected this network; nullopt if it did not say which.
    void setCurrentNetworkSsid(std::optional<std::string> ssid);

    void setScanning(bool scanning);
    void setCurrentBss(std::optional<Communicator::BssProperties> bss);
    void setSupplicantStatus(Communicator::SupplicantConnectionStatus status);

    // In dBm. Ignored while no BSS is known.
    void setSignalStrength(int dBm);

    void setNetworkdIsOnline(bool online);

    // The supplicant started or stopped. Both reset the record.
    void setSupplicantState(bool on);

    // Ends an attempt whose timeout has expired, then returns the current record.
    ConnectionInfo getConnectionInfo();

    // The rest of the attempt's 2 s, zero or negative after they expired; nullopt while no timeout runs.
    std::optional<std::chrono::milliseconds> getActiveTimeout() const;

    // Whether the supplicant is connected or sets up a link, by its last report.
    bool linkUpOrComing() const;

    bool attemptPending() const { return attempt_.has_value(); }

    // Whether the supplicant has connected during the attempt, but has not reported to which BSS.
    bool connectedToUnknownBss() const;

    // Whether the attempt has been in link set-up for 10 s or more. Its end is reported, but the report may be lost.
    bool attemptStandsStill() const;

  private:
    struct AttemptInfo {
        std::string ssid;
        std::chrono::steady_clock::time_point timestamp;  // the start of the 2 s
        bool linkSetupSeen = false;
    };

    // The step with which the decision continues.
    enum class Next { status, signal, stop };

    void internalUpdate();
    void internalGiveUpExpiredAttempt();
    Next internalUpdateAttempt();
    Next internalUpdateStatus();
    Next internalFollowLink(ConnectionInfo::Status status);
    void internalUpdateSignal();

    void internalStartAttempt(std::string ssid, bool byUser);
    void internalSetDisconnected(bool byUser);
    void internalRecordDisconnect(ConnectionInfo::DisconnectReason reason);
    void internalResetAttemptInfo();

    std::optional<AttemptInfo> attempt_;
    std::optional<std::chrono::steady_clock::time_point> disconnectRequestTime_;
    std::optional<Communicator::BssProperties> currentBss_;
    std::chrono::steady_clock::time_point currentBssTime_;
    Communicator::SupplicantConnectionStatus supplicantStatus_{};  // 0, below all others: no report yet
    std::chrono::steady_clock::time_point supplicantStatusTime_;
    bool scanning_ = false;
    bool networkdIsOnline_ = false;
    ConnectionInfo info_;
    std::shared_ptr<TimeProvider> timeProvider_;
};

}  // namespace kaz::wifi
