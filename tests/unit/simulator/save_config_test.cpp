#include "base/temporary_folder.h"
#include "unit/simulator/device_fixture.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace kaz::sim::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class SaveConfig : public DeviceTest {
  protected:
    std::filesystem::path file() const { return folder_ / "wpa_supplicant.conf"; }

    std::string contents() const {
        std::ifstream in(file());
        return {std::istreambuf_iterator<char>(in), {}};
    }

    void startWithFile() { start({.configFile = file()}); }

    void restart() {
        client_->call(systemdManager, "RestartUnit", "ss", "wpa_supplicant.service", "replace");
        ASSERT_TRUE(client_->waitUntil([&] { return device_->unitState() == "active"; }));
    }

    const TemporaryFolder folder_{"kaz-test-"};
};

TEST_F(SaveConfig, WritesTheNetworksToTheFile) {
    startWithFile();
    addNetwork(pskNetwork("Home", "correct horse"));
    addNetwork({{"ssid", "incomplete"}, {"key_mgmt", "WPA-PSK"}});
    EXPECT_FALSE(std::filesystem::exists(file()));
    call("SaveConfig");
    EXPECT_THAT(contents(), AllOf(HasSubstr("update_config=1\n"),
                                  HasSubstr("network={\n\tssid=\"Home\"\n\tpsk=\"correct horse\"\n"),
                                  HasSubstr("\tdisabled=1\n"), Not(HasSubstr("incomplete"))));
}

TEST_F(SaveConfig, KeepsTheSavedNetworksOverARestartAndNoOthers) {
    startWithFile();
    addNetwork(openNetwork("saved"));
    call("SaveConfig");
    addNetwork(openNetwork("unsaved"));
    restart();
    EXPECT_EQ(get("Networks").size(), 1U);
    EXPECT_EQ(client_->get(networkAt(supplicantInterface.path + "/Networks/0"), "Properties").at("ssid"),
              "\"saved\"");
}

TEST_F(SaveConfig, IsReadByTheNextDevice) {
    startWithFile();
    addNetwork(openNetwork("saved"));
    call("SaveConfig");
    device_.reset();
    startWithFile();
    EXPECT_EQ(get("Networks").size(), 1U);
}

TEST_F(SaveConfig, IsRememberedWithoutAFile) {
    start();
    addNetwork(openNetwork("saved"));
    call("SaveConfig");
    restart();
    EXPECT_EQ(get("Networks").size(), 1U);
}

TEST_F(SaveConfig, IsRefusedWhenTheConfigurationMayNotBeUpdated) {
    start({.neighbourhood = {.updateConfig = false}, .configFile = file()});
    EXPECT_EQ(errorOf(supplicantInterface, "SaveConfig"), "fi.w1.wpa_supplicant1.UnknownError");
    client_->set(supplicantInterface, "UpdateConfig", "s", "1");
    EXPECT_EQ(errorOf(supplicantInterface, "SaveConfig"), "");
}

TEST_F(SaveConfig, FailsWhenTheFileCannotBeWritten) {
    start({.configFile = folder_ / "no folder/file"});
    EXPECT_EQ(errorOf(supplicantInterface, "SaveConfig"), "fi.w1.wpa_supplicant1.UnknownError");
}

}  // namespace
}  // namespace kaz::sim::test
