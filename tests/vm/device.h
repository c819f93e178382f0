#pragma once

#include "doubles/recording_log/recording_log.h"

#include <wifi/manager.h>

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kaz::vm {

using Status = wifi::ConnectionInfo::Status;
using Reason = wifi::ConnectionInfo::DisconnectReason;
using Clock = std::chrono::steady_clock;

// The guest is emulated on a machine that has other work too: what takes a second on a device may take ten.
inline constexpr std::chrono::seconds generous{90};

// Follows one Manager: keeps every connection state it publishes and counts its notifications.
class Device {
  public:
    Device();
    ~Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    Device(Device&&) = delete;
    Device& operator=(Device&&) = delete;

    wifi::Manager& manager() { return manager_; }

    // Every state published since the last clearHistory(), oldest first.
    std::vector<wifi::ConnectionInfo> history() const;
    void clearHistory();
    int enabledChanges() const;
    int scanningChanges() const;

    // Blocks until the condition holds. It is looked at after every notification, and now and then for what
    // the Manager does not notify of. False when the limit passes.
    bool eventually(const std::function<bool()>& condition, std::chrono::seconds limit = generous);

    // Blocks until the connection has this status, and this network where one is given.
    bool reaches(Status status, const std::string& ssid = {}, std::chrono::seconds limit = generous);

    // Blocks until a state for which the predicate holds is in the history.
    bool passes(const std::function<bool(const wifi::ConnectionInfo&)>& predicate,
                std::chrono::seconds limit = generous);

    // Blocks until the attempt at this network has ended as a failure.
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
    void note(int& counter);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<wifi::ConnectionInfo> history_;
    int enabledChanges_ = 0;
    int scanningChanges_ = 0;
    int listChanges_ = 0;
    wifi::Manager manager_;  // the last, so that it ends before what its callbacks use
};

// A device that has just been switched on: the supplicant runs, knows no network and is connected to none,
// and a Manager follows it. The log goes to the results too.
class DeviceTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    Device& device() { return *device_; }
    wifi::Manager& manager() { return device_->manager(); }
    const test::RecordingLog& log() const { return log_; }
    test::RecordingLog& log() { return log_; }

    // Makes the Manager, with the device as it is.
    void startManager();

    // In the result of this test, in seconds with one decimal.
    void record(const std::string& name, Clock::duration duration);

  private:
    test::RecordingLog log_;
    std::unique_ptr<Device> device_;
};

}  // namespace kaz::vm

namespace kaz::wifi {

void PrintTo(const ConnectionInfo& info, std::ostream* out);
void PrintTo(const WifiNetwork& network, std::ostream* out);

}  // namespace kaz::wifi
