#pragma once

#include "connection_info/connection_info_helper.h"
#include "doubles/fake_clock/fake_clock.h"
#include "doubles/recording_log/recording_log.h"
#include "support/printed_values/printed_reports.h"
#include "support/tracker_model/tracker_event.h"

#include <gtest/gtest.h>

#include <chrono>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kaz::test {

using namespace std::chrono_literals;
using wifi::ConnectionInfo;
using SupplicantStatus = wifi::Communicator::SupplicantConnectionStatus;
using Events = std::vector<TrackerEvent>;

// The record in one line, for example `connected 'Home' -52` or
// `disconnected '' -100, causedByUser 'Home' @ 1500 ms`. Times count from the usual start of the clock.
std::string describe(const ConnectionInfo& info);

void PrintTo(const TrackerEvent& event, std::ostream* out);

inline TrackerEvent attempt(const std::string& ssid) {
    return {.kind = TrackerEvent::Kind::connect, .ssid = ssid};
}
inline TrackerEvent forget(const std::string& ssid) {
    return {.kind = TrackerEvent::Kind::forget, .ssid = ssid};
}
inline TrackerEvent select(const std::string& ssid) {
    return {.kind = TrackerEvent::Kind::select, .ssid = ssid};
}
inline TrackerEvent bss(const std::string& ssid, int dBm = -50) {
    return {.kind = TrackerEvent::Kind::bss, .ssid = ssid, .dBm = dBm};
}
inline TrackerEvent signal(int dBm) {
    return {.kind = TrackerEvent::Kind::signal, .dBm = dBm};
}
inline TrackerEvent scanning(bool flag) {
    return {.kind = TrackerEvent::Kind::scanning, .flag = flag};
}
inline TrackerEvent online(bool flag) {
    return {.kind = TrackerEvent::Kind::online, .flag = flag};
}
inline TrackerEvent status(SupplicantStatus status) {
    return {.kind = TrackerEvent::Kind::status, .status = status};
}
inline TrackerEvent wait(std::chrono::nanoseconds duration) {
    return {.kind = TrackerEvent::Kind::wait, .duration = duration};
}

inline const TrackerEvent look;
inline const TrackerEvent disconnect{.kind = TrackerEvent::Kind::disconnect};
inline const TrackerEvent selectNameless{.kind = TrackerEvent::Kind::selectNameless};
inline const TrackerEvent noBss{.kind = TrackerEvent::Kind::noBss};
inline const TrackerEvent supplicantStarts{.kind = TrackerEvent::Kind::supplicantComes};
inline const TrackerEvent supplicantStops{.kind = TrackerEvent::Kind::supplicantGoes};
inline const TrackerEvent statusMissing = status({});  // no report yet
inline const TrackerEvent statusDisabled = status(SupplicantStatus::InterfaceDisabled);
inline const TrackerEvent statusDisconnected = status(SupplicantStatus::Disconnected);
inline const TrackerEvent statusConnecting = status(SupplicantStatus::Connecting);
inline const TrackerEvent statusConnected = status(SupplicantStatus::Connected);

// The states in which a test begins. The network is "Home" at -50 dBm.
inline const Events fresh;
inline const Events attempting{attempt("Home"), wait(100ms)};
inline const Events connecting{bss("Home"), statusConnecting,
                               wait(1s)};  // by the supplicant, without an attempt
inline const Events connectingIP{bss("Home"), statusConnected, wait(1s)};
inline const Events connected{online(true), bss("Home"), statusConnected, wait(1s)};

// A tracker, its clock, and the log from the beginning.
class TrackerTest : public ::testing::Test {
  protected:
    void happen(const Events& events);

    std::string published() { return describe(tracker.getConnectionInfo()); }
    std::optional<std::chrono::milliseconds> timeLeft() const { return tracker.getActiveTimeout(); }

    std::shared_ptr<FakeClock> clock = std::make_shared<FakeClock>();
    wifi::ConnectionInfoHelper tracker{clock};
    RecordingLog log;
};

// The events that lead to a state, and further ones.
template <typename... Event>
Events from(Events state, const Event&... further) {
    (state.push_back(further), ...);
    return state;
}

// What is known after the events: the published record, the rest of the timeout, and the whole log.
struct TrackerCase {
    const char* name;
    Events events;
    std::string published;
    std::optional<std::chrono::milliseconds> timeLeft{};  // nullopt: none runs
    std::optional<LogRecord> logged{};
};

// Runs a table of cases. Instantiate it with each table.
class Tracker : public TrackerTest, public ::testing::WithParamInterface<TrackerCase> {};

void PrintTo(const TrackerCase& row, std::ostream* out);

inline std::string nameOf(const ::testing::TestParamInfo<TrackerCase>& row) {
    return row.param.name;
}

}  // namespace kaz::test
