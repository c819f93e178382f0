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

// A simulated device with a handful of networks around it, and one user of the library on it.
class DeviceFixture : public ::testing::Test {
  protected:
    DeviceFixture();
    ~DeviceFixture() override;

    // Change this before start().
    sim::Neighbourhood neighbourhood;

    // Switches the device on, then starts the user and waits until it follows the supplicant (where that
    // runs).
    void start();

    sim::SimulatedDevice& device() { return *device_; }
    WifiUser& user() { return *user_; }
    wifi::Manager& manager() { return user_->manager(); }
    const RecordingLog& log() const { return log_; }
    void forgetLog() { log_.clear(); }

    // A new user, after the former one left. The second waits until it follows the supplicant.
    void replaceUser();
    void restartUser();

    // The bus breaks, and with it the device; after the restart both are there again, with what was saved.
    void crashBus();
    void restartBus();

    // All services leave the bus, and come anew with what was saved.
    void restartDevice();

    // The supplicant's configuration file; empty while it was never saved.
    std::string savedConfiguration() const;
    // Waits until it is saved with this in it.
    bool waitForSaved(const std::string& part);

    // The calls the supplicant received for this member, in order.
    std::vector<sim::Call> callsOf(const std::string& member) const;

    static wifi::ConnectionSettings settings(const std::string& ssid, wifi::SecurityMode mode,
                                             const std::string& password = {});

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
