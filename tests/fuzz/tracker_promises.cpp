#include "fuzz/tracker_promises.h"

#include "fuzz/require.h"

#include <algorithm>
#include <tuple>

namespace kaz::fuzz {
namespace {

using wifi::ConnectionInfo;
using Kind = TrackerEvent::Kind;
using Reason = ConnectionInfo::DisconnectReason;
using Status = ConnectionInfo::Status;
using SupplicantStatus = wifi::Communicator::SupplicantConnectionStatus;

bool isLive(const ConnectionInfo& record) {
    return record.status != Status::disconnected;
}

auto disconnectOf(const ConnectionInfo& record) {
    return std::tie(record.disconnectReason, record.disconnectTime, record.disconnectSsid);
}

bool tellsOfTimeOut(const TrackerPromises::Records& logged) {
    return std::any_of(logged.begin(), logged.end(),
                       [](const std::string& text) { return text.starts_with("warning: No response"); });
}

bool beginsAttempt(Kind kind) {
    return kind == Kind::connect || kind == Kind::select;
}

bool isStatusOfSupplicant(SupplicantStatus status) {
    return status >= SupplicantStatus{} && status <= SupplicantStatus::Connected;
}

}  // namespace

void TrackerPromises::judgeEvent(const TrackerEvent& event, const Records& logged) {
    const bool timeOut = tellsOfTimeOut(logged);
    require(!timeOut || !scanning_, "the time-out does not strike while a scan runs");
    require(!timeOut || !linkSetUpSeen_, "nor after the link was being set up");
    require(logged.size() <= 2, "an event ends no more attempts than there can be");

    if (beginsAttempt(event.kind)) {
        chosenSsid_ = event.ssid;
        linkSetUpSeen_ = false;
        userAsked_ = false;
    } else if (event.kind == Kind::status) {
        linkSetUpSeen_ = linkSetUpSeen_ || (event.status == SupplicantStatus::Connecting && !timeOut);
        statusIsKnown_ = statusIsKnown_ && isStatusOfSupplicant(event.status);
    } else if (event.kind == Kind::scanning) {
        scanning_ = event.flag;
    } else if (event.kind == Kind::bss) {
        bssSsid_ = event.ssid;
    } else if (event.kind == Kind::disconnect || event.kind == Kind::forget) {
        userAsked_ = true;
    } else if (event.kind == Kind::supplicantGoes) {
        scanning_ = false;
        userAsked_ = false;
    }
}

void TrackerPromises::judgeRecord(const TrackerEvent& event, const ConnectionInfo& record,
                                  std::chrono::steady_clock::time_point now) {
    judgeSsid(record);
    judgeDisconnect(event, record, now);
    before_ = record;
}

void TrackerPromises::judgeSsid(const ConnectionInfo& record) const {
    const bool ofBss = record.ssid == bssSsid_;
    switch (record.status) {
        case Status::disconnected:
            return require(record.ssid.empty(), "a record without a connection has no SSID");
        case Status::connectingWifi:
            return require(ofBss || record.ssid == chosenSsid_ || !statusIsKnown_,
                           "what is being connected to was chosen, or is there");
        case Status::connectingIP:
        case Status::connected:
            return require(ofBss || !statusIsKnown_, "the connection is with the BSS that was last known");
    }
    require(false, "the status is one of the four");
}

void TrackerPromises::judgeDisconnect(const TrackerEvent& event, const ConnectionInfo& record,
                                      std::chrono::steady_clock::time_point now) const {
    if (disconnectOf(record) == disconnectOf(before_)) {
        return;
    }
    if (event.kind == Kind::supplicantComes || event.kind == Kind::supplicantGoes) {
        return require(disconnectOf(record) == disconnectOf(ConnectionInfo{}),
                       "a supplicant that comes or goes clears the record of the last disconnect");
    }
    require(record.disconnectTime == now, "a disconnect is recorded when it happens");
    const bool byUser = record.disconnectReason == Reason::causedByUser;
    require(byUser || record.disconnectReason == Reason::causedBySystem, "a disconnect has a cause");
    require(!byUser || userAsked_ || event.kind == Kind::connect,
            "the user causes only what the user asked for");
    const bool relabels = event.kind == Kind::forget && byUser && !isLive(before_) &&
                          before_.disconnectReason == Reason::causedBySystem;
    if (relabels) {
        return require(record.disconnectSsid == before_.disconnectSsid && record.disconnectSsid == event.ssid,
                       "forgetting changes the cause of that network's disconnect only");
    }
    const bool endedBefore = isLive(before_) && record.disconnectSsid == before_.ssid;
    const bool endedAtOnce = beginsAttempt(event.kind) && record.disconnectSsid == event.ssid;
    require(endedBefore || endedAtOnce, "only what was live is recorded as disconnected");
}

}  // namespace kaz::fuzz
