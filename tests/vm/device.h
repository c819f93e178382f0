#pragma once

#include "base/non_copyable.h"
#include "doubles/recording_log/recording_log.h"
#include "support/printed_values/printed_values.h"

#include <wifi/client/follower.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kaz::vm {

using Status = wifi::ConnectionInfo::Status;
using Reason = wifi::ConnectionInfo::DisconnectReason;
using Clock = std::chrono::steady_clock;

// The guest is emulated on a machine that may be busy: a second on a device may become ten.
inline constexpr std::chrono::seconds generous{90};

// Keeps every connection state that one Manager publishes, and counts its changes. For one thread.
class Device : NonCopyable {
  public:
    wifi::Manager& manager() { return follower_.manager(); }

    // Every state published since the last clearHistory(), oldest first.
    const std::vector<wifi::ConnectionInfo>& history();
    void clearHistory();
    // How often isEnabled() or isWifiStackInitialized() has changed, and isScanning().
    int enabledChanges();
    int scanningChanges();

    // Blocks until the condition is true. Checks it after every change, and periodically for changes
    // that nobody reports. Returns false on timeout.
    bool eventually(const std::function<bool()>& condition, std::chrono::seconds limit = generous);

    // Blocks until the connection has this status and, if given, this network.
    bool reaches(Status status, const std::string& ssid = {}, std::chrono::seconds limit = generous);

    // Blocks until the history has a state for which the predicate is true.
    bool passes(const std::function<bool(const wifi::ConnectionInfo&)>& predicate,
                std::chrono::seconds limit = generous);

    // Blocks until the attempt at this network has failed.
    bool loses(const std::string& ssid, std::chrono::seconds limit = generous);

    bool attaches() {
        return eventually([this] { return manager().isWifiStackInitialized(); });
    }
    bool detaches() {
        return eventually([this] { return !manager().isWifiStackInitialized(); });
    }

    // Connects and blocks until the network is in use, with an address.
    bool connects(const wifi::ConnectionSettings& settings);

  private:
    void takeAll();

    wifi::client::Follower follower_;
    wifi::client::Snapshot latest_;
    std::vector<wifi::ConnectionInfo> history_;
    int enabledChanges_ = 0;
    int scanningChanges_ = 0;
};

// A device after a start: the supplicant runs without configured networks and without a connection, and a
// Manager is attached to it. The log also goes to the results.
class DeviceTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    Device& device() { return *device_; }
    wifi::Manager& manager() { return device_->manager(); }
    const test::RecordingLog& log() const { return log_; }
    test::RecordingLog& log() { return log_; }

    // Creates the Manager without changing the device.
    void startManager();

    // Records the time in the result of this test, in seconds with one decimal.
    void record(const std::string& name, Clock::duration duration);

  private:
    test::RecordingLog log_;
    std::unique_ptr<Device> device_;
};

}  // namespace kaz::vm
