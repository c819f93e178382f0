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
                                     SupplicantConfiguration& configuration, NetworkList& list,
                                     Published& published)
    : communicator_(communicator),
      tracker_(tracker),
      configuration_(configuration),
      list_(list),
      published_(published) {}

void ConnectionRefresh::taskUpdateConnectionInfo() {
    ConnectionInfo info = tracker_.getConnectionInfo();
    if (info == connectionInfo_) {
        return;
    }
    log::debug("connectionInfo changed: {}", info);
    metrics_.reportChange(connectionInfo_, info);
    updateSignalPollTimer(info);
    // The first change shows the state before the start. No attempt of ours led to it.
    if (connectionInfoStored_) {
        reactToSuccess(info);
        reactToEndOfAttempt(info);
    }
    published_.publish(info);
    list_.setConnection(info);
    connectionInfo_ = std::move(info);
    connectionInfoStored_ = true;
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
