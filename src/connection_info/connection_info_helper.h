// The connection tracker: turns scattered facts about the link into one consistent ConnectionInfo.
//
// Facts come from three sides. The user asks to connect, to disconnect or to forget. The supplicant chooses a
// network, changes its connection status and moves between access points (BSSs); it may also come and go as a
// whole. And networkd says whether the link has an address.
//
// 1. While nobody asked for anything, the published status follows the supplicant: Connecting is
//    `connectingWifi`, Connected is `connectingIP` or, when networkd is online, `connected`; anything below is
//    `disconnected`. The SSID is that of the current BSS.
//
// 2. An attempt begins when the user asks for a network or the supplicant chooses one by itself. From then on
//    `connectingWifi` with that SSID is published whatever the supplicant still says about the network before;
//    reports older than the attempt do not count. The attempt ends when
//      - the supplicant completes on the wanted SSID: success;
//      - it sets up the link to another SSID: that one is published;
//      - it had begun to set up the link and falls back: failure;
//      - nothing happens for 2 s: failure. The 2 s begin anew when a scan ends. They stand still while a scan
//        runs, and for good once the link set-up was seen, because then the supplicant itself will tell how it
//        ends;
//      - another attempt begins, the user disconnects, or the supplicant goes away.
//    After that the status follows the supplicant again, as in 1.
//
// 3. A disconnect that the user asked for is published at once. Supplicant reports older than the request are
//    ignored, so that a late "still connected" does not undo it.
//
// 4. Every end of a live state is recorded: from which network, when, and whether the user or the system
//    caused it. The record stays until the next one, or until the supplicant comes or goes.
#pragma once

#include "communicator/communicator.h"
#include "connection_info/time_provider.h"

#include <wifi/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace kaz::wifi {

// Facts in, record out. Not thread-safe: everything is called on the loop thread.
class ConnectionInfoHelper {
  public:
    // How long the supplicant may be silent about an attempt.
    static constexpr std::chrono::nanoseconds AttemptTimeout = std::chrono::seconds(2);

    explicit ConnectionInfoHelper(std::shared_ptr<TimeProvider> timeProvider);

    void notifyAboutConnectionAttempt(std::string ssid);
    void notifyAboutDisconnect();

    // Forgetting the network in use is a disconnect. Forgetting the one that just dropped makes the drop the
    // user's doing.
    void notifyAboutForget(const std::string& ssid);

    // The supplicant chose this network; nothing when it did not say which.
    void setCurrentNetworkSsid(std::optional<std::string> ssid);

    void setScanning(bool scanning);
    void setCurrentBss(std::optional<Communicator::BssProperties> bss);
    void setSupplicantStatus(Communicator::SupplicantConnectionStatus status);

    // In dBm. Ignored while no BSS is known.
    void setSignalStrength(int dBm);

    void setNetworkdIsOnline(bool online);

    // The supplicant came or went. Either way the record starts afresh.
    void setSupplicantState(bool on);

    // The record as of now: an attempt whose time is up is given up first.
    ConnectionInfo getConnectionInfo();

    // What is left of the attempt's 2 s, zero or negative when they are over; nothing when no time is running.
    std::optional<std::chrono::milliseconds> getActiveTimeout() const;

  private:
    struct AttemptInfo {
        std::string ssid;
        std::chrono::steady_clock::time_point timestamp;  // the start of the 2 s
        bool linkSetupSeen = false;
    };

    // Where the decision goes on after a step.
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
    Communicator::SupplicantConnectionStatus supplicantStatus_{};  // 0, below all others: nothing reported
    std::chrono::steady_clock::time_point supplicantStatusTime_;
    bool scanning_ = false;
    bool networkdIsOnline_ = false;
    ConnectionInfo info_;
    std::shared_ptr<TimeProvider> timeProvider_;
};

}  // namespace kaz::wifi
