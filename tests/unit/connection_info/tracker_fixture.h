#pragma once

#include "communicator/communicator.h"
#include "connection_info/connection_info_helper.h"
#include "doubles/fake_clock/fake_clock.h"
#include "doubles/recording_log/recording_log.h"
#include "support/printed_values/printed_values.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace kaz::test {

using wifi::ConnectionInfo;
using Bss = wifi::Communicator::BssProperties;
using SupplicantStatus = wifi::Communicator::SupplicantConnectionStatus;

// The record in one line, for example `connected 'Home' -52` or
// `disconnected '' -100, causedByUser 'Home' @ 1500 ms`. Times count from the usual start of the clock.
std::string describe(const ConnectionInfo& info);

Bss bss(const std::string& ssid, int signal = -50);

// A tracker, its clock, and the log from the beginning.
class TrackerTest : public ::testing::Test {
  protected:
    static constexpr auto noReportYet = SupplicantStatus{};

    // Brings the tracker into this state, then advances the clock by one second. The BSS has -50 dBm.
    void becomeConnecting(const std::string& ssid);  // by the supplicant, without an attempt
    void becomeConnectingIP(const std::string& ssid);
    void becomeConnected(const std::string& ssid);

    // The supplicant's reports when the link to the BSS is up.
    void reportSuccess(const std::string& ssid);

    std::string published() { return describe(tracker.getConnectionInfo()); }
    std::optional<std::chrono::milliseconds> timeLeft() const { return tracker.getActiveTimeout(); }

    std::shared_ptr<FakeClock> clock = std::make_shared<FakeClock>();
    wifi::ConnectionInfoHelper tracker{clock};
    RecordingLog log;
};

}  // namespace kaz::test
