#include "support/real_supplicant/real_supplicant.h"
#include "support/process/running_program.h"
#include "unit/simulator/device_fixture.h"

#include <signal.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace kaz::sim::test {
namespace {

using kaz::test::RunningProgram;
using ::testing::HasSubstr;

class RealSupplicant : public DeviceTest {
  protected:
    void SetUp() override {
        if (const auto& reason = kaz::test::whyNoRealSupplicant(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        start({.realSupplicant = true});
        client_->call(systemdManager, "Subscribe");
    }

    bool becomes(const std::string& state) {
        return client_->waitUntil([&] { return client_->get(systemdUnit, "ActiveState") == state; });
    }

    pid_t daemon() {
        const Target bus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};
        return client_->call(bus, "GetConnectionUnixProcessID", "s", "fi.w1.wpa_supplicant1").at(0);
    }
};

TEST_F(RealSupplicant, IsThereWhenTheDeviceIs) {
    EXPECT_EQ(client_->get(systemdUnit, "ActiveState"), "active");
    EXPECT_EQ(get("Driver"), "wired");
}

TEST_F(RealSupplicant, CompletesAndTheDeviceGoesOnline) {
    select(addNetwork({{"ssid", "wired"}, {"key_mgmt", "NONE"}}));
    ASSERT_TRUE(client_->waitUntil([&] { return get("State") == "completed"; }));
    ASSERT_TRUE(client_->waitUntil([&] { return client_->get(networkdManager, "OnlineState") == "online"; }));
    call("Disconnect");
    EXPECT_TRUE(
        client_->waitUntil([&] { return client_->get(networkdManager, "OnlineState") == "offline"; }));
}

TEST_F(RealSupplicant, SavesItsConfiguration) {
    addNetwork({{"ssid", "wired"}, {"key_mgmt", "NONE"}});
    call("SaveConfig");
    std::ifstream in(get("ConfigFile").get<std::string>());
    const std::string contents(std::istreambuf_iterator<char>(in), {});
    EXPECT_THAT(contents, HasSubstr("ssid=\"wired\""));
}

TEST_F(RealSupplicant, StopsAndStartsWithTheUnit) {
    addNetwork({{"ssid", "wired"}, {"key_mgmt", "NONE"}});
    call("SaveConfig");
    client_->call(systemdManager, "StopUnit", "ss", "wpa_supplicant.service", "replace");
    ASSERT_TRUE(becomes("inactive"));
    EXPECT_EQ(client_->ownerOf("fi.w1.wpa_supplicant1"), "");
    client_->call(systemdManager, "StartUnit", "ss", "wpa_supplicant.service", "replace");
    ASSERT_TRUE(becomes("active"));
    EXPECT_EQ(get("Networks").size(), 1U);
}

TEST_F(RealSupplicant, FailsTheUnitWhenItIsKilled) {
    ::kill(daemon(), SIGKILL);
    ASSERT_TRUE(becomes("failed"));
    client_->call(systemdManager, "ResetFailedUnit", "s", "wpa_supplicant.service");
    client_->call(systemdManager, "StartUnit", "ss", "wpa_supplicant.service", "replace");
    EXPECT_TRUE(becomes("active"));
}

TEST_F(RealSupplicant, EndsWithTheDevice) {
    const pid_t process = daemon();
    device_.reset();
    EXPECT_NE(::kill(process, 0), 0);
    EXPECT_EQ(client_->ownerOf("fi.w1.wpa_supplicant1"), "");
}

TEST_F(RealSupplicant, EndsWithAKilledProgramToo) {
    device_.reset();
    RunningProgram program({KAZ_DEVICE_SIM, "--real-supplicant", "--bus", bus_.address()});
    program.readLine();
    ASSERT_NE(client_->ownerOf("fi.w1.wpa_supplicant1"), "");
    program.sendSignal(SIGKILL);
    program.wait();
    EXPECT_TRUE(client_->waitUntil([&] { return client_->ownerOf("fi.w1.wpa_supplicant1").empty(); }));
}

}  // namespace
}  // namespace kaz::sim::test
