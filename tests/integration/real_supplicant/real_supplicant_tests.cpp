// The library over the wpa_supplicant daemon itself, on a wire: it has no access points, but adds, selects,
// completes, keeps and saves networks as it does on a device. systemd and networkd are simulated.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/temporary_folder.h"
#include "communicator/communicator.h"
#include "doubles/recording_log/recording_log.h"
#include "simulator/device/simulated_device.h"
#include "simulator/private_bus/private_bus.h"
#include "support/files/files.h"
#include "support/real_supplicant/real_supplicant.h"
#include "support/waiting/waiting.h"
#include "support/wifi_user/wifi_user.h"

namespace kaz::test {
namespace {

using wifi::ConnectionInfo;
using wifi::ConnectionSettings;
using wifi::ConnectResult;
using Status = ConnectionInfo::Status;

class RealSupplicant : public ::testing::Test {
  protected:
    ~RealSupplicant() override {
        user_.reset();
        ::unsetenv("KAZ_CONFIG_FILE");
    }

    void SetUp() override {
        if (const auto& reason = whyNoRealSupplicant(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        bus_.becomeSystemBus();
        ::setenv("KAZ_CONFIG_FILE", (folder_ / "kaz.conf").c_str(), 1);
        device_ = std::make_unique<sim::SimulatedDevice>(
            sim::SimulatedDevice::Options{bus_.address(), {}, 1.0, configuration(), true});
        user_ = std::make_unique<WifiUser>();
        ASSERT_TRUE(user().waitForStack(true));
    }

    WifiUser& user() { return *user_; }
    wifi::Manager& manager() { return user_->manager(); }
    sim::SimulatedDevice& device() { return *device_; }
    const RecordingLog& log() const { return log_; }

    std::filesystem::path configuration() const { return folder_ / "supplicant.conf"; }
    std::string saved() const { return readFile(configuration()); }

    // A wired network has no access point, so the library never reports a connection. The daemon's State shows
    // what it does.
    void connectOnTheWire(const std::string& ssid) {
        log_.clear();
        ConnectionSettings settings;
        settings.ssid = ssid;
        ASSERT_EQ(manager().connect(settings), ConnectResult::ok);
        ASSERT_TRUE(log().waitForText(spdlog::level::debug, "PropertiesChanged: State=completed"));
    }

    // Makes the library save, and waits until it has saved.
    template <typename Action>
    void doAndWaitForSave(Action action) {
        log_.clear();
        action();
        ASSERT_TRUE(log().waitForText(spdlog::level::debug, "Saved new wpa_supplicant config"));
    }

    bool isSaved(const std::string& text) const { return saved().find(text) != std::string::npos; }

    RecordingLog log_;

  private:
    TemporaryFolder folder_;
    sim::PrivateBus bus_;
    std::unique_ptr<sim::SimulatedDevice> device_;
    std::unique_ptr<WifiUser> user_;
};

TEST_F(RealSupplicant, TheManagerAttachesToARunningSupplicant) {
    EXPECT_TRUE(log().waitForText(spdlog::level::debug, "wpa_supplicant has 1 interfaces"));
    EXPECT_TRUE(log().waitForText(spdlog::level::debug, "wpa_supplicant is running"));
    EXPECT_EQ(manager().eapMethods(), (std::set<std::string>{"MSCHAPV2", "PEAP", "PWD", "TTLS"}));
    EXPECT_EQ(log().texts(spdlog::level::err), std::vector<std::string>{});
    EXPECT_EQ(log().texts(spdlog::level::warn), std::vector<std::string>{});
}

TEST_F(RealSupplicant, ANetworkIsAddedSelectedAndCompleted) {
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Wire"));
    EXPECT_TRUE(log().contains("Added network /fi/w1/wpa_supplicant1/Interfaces/"));
    EXPECT_TRUE(log().contains("Selected network /fi/w1/wpa_supplicant1/Interfaces/"));
    EXPECT_TRUE(log().contains(R"(NetworkSelected is ssid="Wire")"));
}

TEST_F(RealSupplicant, ANetworkIsSavedOnceTheAttemptIsOver) {
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Wire"));
    EXPECT_FALSE(isSaved("Wire")) << "others are still disabled";
    ASSERT_NO_FATAL_FAILURE(doAndWaitForSave([&] { manager().disconnect(); }));
    EXPECT_TRUE(isSaved("ssid=\"Wire\"")) << saved();
    EXPECT_FALSE(isSaved("disabled=1")) << saved();
}

TEST_F(RealSupplicant, ConnectingTwiceLeavesOneConfiguration) {
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Wire"));
    ASSERT_NO_FATAL_FAILURE(doAndWaitForSave([&] { manager().disconnect(); }));
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Wire"));
    ASSERT_NO_FATAL_FAILURE(doAndWaitForSave([&] { manager().disconnect(); }));
    EXPECT_EQ(saved().find("Wire"), saved().rfind("Wire")) << saved();
}

TEST_F(RealSupplicant, AnSsidThatIsNoTextKeepsItsBytes) {
    const std::string ssid = "qu\"ote\\ \xc3\xa9";
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire(ssid));
    ASSERT_NO_FATAL_FAILURE(doAndWaitForSave([&] { manager().disconnect(); }));
    ASSERT_NO_FATAL_FAILURE(doAndWaitForSave([&] { manager().forgetNetwork(ssid); }));
    EXPECT_TRUE(log().texts(spdlog::level::err).empty()) << "the network was found again by its SSID";
    EXPECT_FALSE(isSaved("network={")) << saved();
}

TEST_F(RealSupplicant, AForgottenNetworkLeavesTheConfiguration) {
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Wire"));
    ASSERT_NO_FATAL_FAILURE(doAndWaitForSave([&] { manager().forgetNetwork("Wire"); }));
    EXPECT_TRUE(user().waitForStatus(Status::disconnected));
    EXPECT_FALSE(isSaved("network={")) << saved();
}

TEST_F(RealSupplicant, ASavedNetworkConnectsAfterTheUnitWasStoppedAndStarted) {
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Wire"));
    ASSERT_NO_FATAL_FAILURE(doAndWaitForSave([&] { manager().disconnect(); }));
    manager().setEnabled(false);
    ASSERT_TRUE(user().waitForStack(false));
    EXPECT_TRUE(eventually([&] { return device().unitState() == "inactive"; })) << device().unitState();

    manager().setEnabled(true);
    ASSERT_TRUE(user().waitForStack(true));
    log_.clear();
    manager().connectConfigured("Wire");
    ASSERT_TRUE(log().waitForText(spdlog::level::debug, "Selected network "));
}

TEST_F(RealSupplicant, ADaemonThatWasKilledIsUsedAgainOnceItIsBack) {
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Wire"));
    device().crashSupplicant();
    ASSERT_TRUE(user().waitForStack(false));
    ASSERT_TRUE(user().waitForStatus(Status::disconnected));
    EXPECT_EQ(device().unitState(), "failed");

    manager().setEnabled(true);
    ASSERT_TRUE(user().waitForStack(true));
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Again"));
}

// The library sets priorities after connecting to an access point, which a wire does not have. So the test sets
// them through the communicator.
TEST_F(RealSupplicant, PrioritiesAreTakenAndSaved) {
    ASSERT_NO_FATAL_FAILURE(connectOnTheWire("Wire"));
    ASSERT_NO_FATAL_FAILURE(doAndWaitForSave([&] { manager().disconnect(); }));
    user().leave();

    std::promise<bool> done;
    const auto communicator = wifi::createCommunicator();
    communicator->networkdOnlineHandler = [](bool) {};
    communicator->pushTaskAsync_([&] {
        const auto networks = communicator->getAllConfiguredNetworksSync();
        done.set_value(networks.size() == 1 && networks.front()->getSsid() == "Wire" &&
                       networks.front()->setPrioritySync(2) && communicator->saveNetworkConfigurationSync());
    });
    communicator->startEventLoop();
    EXPECT_TRUE(done.get_future().get());
    communicator->stopEventLoop();
    EXPECT_TRUE(isSaved("priority=2")) << saved();
    EXPECT_TRUE(isSaved("ssid=\"Wire\"")) << "the other settings stay";
}

}  // namespace
}  // namespace kaz::test
