#pragma once

#include "base/temporary_folder.h"
#include "doubles/recording_log/recording_log.h"
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "simulator/world/neighbourhood.h"
#include "support/files/files.h"
#include "support/wifi_user/wifi_user.h"

#include <gtest/gtest.h>
#include <wifi/types.h>

#include <memory>
#include <string>
#include <vector>

namespace kaz::test {

// A simulated device with a few networks in range, and one user of the library on it.
class DeviceFixture : public ::testing::Test {
  protected:
    DeviceFixture();
    ~DeviceFixture() override;

    // Change this before start().
    sim::Neighbourhood neighbourhood;
    sim::AccessPoint& accessPoint(const std::string& ssid);

    // Switches the device on and starts the user. If the supplicant runs and has an interface, waits until the user is
    // attached to it.
    void start();

    sim::SimulatedDevice& device() { return *device_; }
    WifiUser& user() { return *user_; }
    wifi::Manager& manager() { return user_->manager(); }
    const RecordingLog& log() const { return log_; }
    void forgetLog() { log_.clear(); }

    // A new user, after the former one has ended. restartUser() waits until the user is attached to the
    // supplicant.
    void replaceUser();
    void restartUser();

    // The bus and the device break. After the restart both are back, with the saved configuration.
    void crashBus();
    void restartBus();

    // All services leave the bus and restart with the saved configuration.
    void restartDevice();

    // The supplicant's configuration file; empty before the first save.
    std::string savedConfiguration() const;
    // Waits until the saved file contains this text.
    bool waitForSaved(const std::string& part);

    // The supplicant's calls of this member, in order.
    std::vector<sim::Call> callsOf(const std::string& member) const;
    // Waits for a call of this member since the start or forgetCalls().
    bool waitForCall(const std::string& member) const;

    static wifi::ConnectionSettings settings(const std::string& ssid, wifi::SecurityMode mode,
                                             const std::string& password = {});
    static wifi::ConnectionSettings home(const std::string& password = homePassword) {
        return settings("Home", wifi::SecurityMode::rsnPsk, password);
    }
    static wifi::ConnectionSettings cafe() { return settings("Cafe", wifi::SecurityMode::none); }

    // Connects the user, and fails the test if it is not connected in the end.
    void connect(const wifi::ConnectionSettings& target);

    static constexpr const char* homePassword = "correct horse";

  private:
    void startDevice();

    RecordingLog log_;
    TemporaryFolder folder_;
    sim::PrivateBus bus_;
    std::unique_ptr<sim::SimulatedDevice> device_;
    std::unique_ptr<WifiUser> user_;
};

}  // namespace kaz::test
