#include "manager/connection_refresh.h"

#include "base/log.h"
#include "diagnostics/connection_info_text.h"

#include <chrono>
#include <utility>

namespace kaz::wifi {
namespace {

using Status = ConnectionInfo::Status;

constexpr std::chrono::milliseconds signalPollPeriod{60000};

}  // namespace

ConnectionRefresh::ConnectionRefresh(Communicator& communicator, ConnectionInfoHelper& tracker,
                                     SupplicantConfiguration& configuration, NetworkList& list, Judge& judge,
                                     const NetworkInUseReports& inUse, Presentation& presentation,
                                     Published& published)
    : communicator_(communicator),
      tracker_(tracker),
      configuration_(configuration),
      list_(list),
      judge_(judge),
      inUse_(inUse),
      presentation_(presentation),
      published_(published) {}

void ConnectionRefresh::taskUpdateConnectionInfo() {
    const ConnectionInfo info = tracker_.getConnectionInfo();
    const bool silent = communicator_.isSupplicantSilent();
    judge_.noteSilence(silent);
    presentation_.setSilent(silent);
    judge_.look(details_.info, info);
    presentation_.look(details_.info, info);
    ConnectionDetails next{info,
                           judge_.lastOutcome(),
                           inUse_.of(info),
                           presentation_.shownStatus(),
                           presentation_.trouble(),
                           communicator_.stackTrouble()};
    if (next == details_) {
        return;
    }
    const bool infoChanged = info != details_.info;
    if (infoChanged) {
        reactToChange(info);
        if (!silent && communicator_.isSupplicantSilent()) {
            judge_.noteSilenceAfterEnd();
            next.lastOutcome = judge_.lastOutcome();
        }
    }
    published_.publish(next);
    details_ = std::move(next);
    if (infoChanged) {
        list_.setConnection(info);
        connectionInfoStored_ = true;
    }
}

void ConnectionRefresh::reactToChange(const ConnectionInfo& info) {
    log::debug("connectionInfo changed: {}", info);
    metrics_.reportChange(details_.info, info);
    updateSignalPollTimer(info);
    // The first change shows the state before the start. No attempt of ours led to it.
    if (connectionInfoStored_) {
        reactToSuccess(info);
        reactToEndOfAttempt(info);
    }
}

void ConnectionRefresh::updateSignalPollTimer(const ConnectionInfo& next) {
    const bool wasLive = details_.info.status != Status::disconnected;
    const bool isLive = next.status != Status::disconnected;
    if (wasLive != isLive) {
        communicator_.configureTimerSync(isLive, signalPollPeriod);
    }
}

void ConnectionRefresh::reactToSuccess(const ConnectionInfo& next) {
    const bool reached = next.status >= Status::connectingIP;
    const bool before = details_.info.status >= Status::connectingIP && details_.info.ssid == next.ssid;
    if (reached && !before) {
        metrics_.reportSuccess();
        configuration_.prefer(next.ssid);
    }
}

void ConnectionRefresh::reactToEndOfAttempt(const ConnectionInfo& next) {
    if (next.status != Status::connectingWifi) {
        configuration_.enableOthersAgain();
    }
}

}  // namespace kaz::wifi
