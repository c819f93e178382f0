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
                                     Published& published)
    : communicator_(communicator),
      tracker_(tracker),
      configuration_(configuration),
      list_(list),
      judge_(judge),
      published_(published) {}

void ConnectionRefresh::taskUpdateConnectionInfo() {
    ConnectionInfo info = tracker_.getConnectionInfo();
    judge_.look(connectionInfo_, info);
    const bool infoChanged = info != connectionInfo_;
    if (!infoChanged && judge_.lastOutcome() == lastOutcome_) {
        return;
    }
    if (infoChanged) {
        reactToChange(info);
    }
    lastOutcome_ = judge_.lastOutcome();
    published_.publish({info, lastOutcome_});
    if (infoChanged) {
        list_.setConnection(info);
        connectionInfo_ = std::move(info);
        connectionInfoStored_ = true;
    }
}

void ConnectionRefresh::reactToChange(const ConnectionInfo& info) {
    log::debug("connectionInfo changed: {}", info);
    metrics_.reportChange(connectionInfo_, info);
    updateSignalPollTimer(info);
    // The first change shows the state before the start. No attempt of ours led to it.
    if (connectionInfoStored_) {
        reactToSuccess(info);
        reactToEndOfAttempt(info);
    }
}

void ConnectionRefresh::updateSignalPollTimer(const ConnectionInfo& next) {
    const bool wasLive = connectionInfo_.status != Status::disconnected;
    const bool isLive = next.status != Status::disconnected;
    if (wasLive != isLive) {
        communicator_.configureTimerSync(isLive, signalPollPeriod);
    }
}

void ConnectionRefresh::reactToSuccess(const ConnectionInfo& next) {
    const bool reached = next.status >= Status::connectingIP;
    const bool before = connectionInfo_.status >= Status::connectingIP && connectionInfo_.ssid == next.ssid;
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
