#include "simulator/supplicant/config_file.h"

#include "base/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>

namespace kaz::sim::test {
namespace {

using ::testing::HasSubstr;

const std::vector<std::string> methods = {"PEAP"};

class ConfigFile : public ::testing::Test {
  protected:
    std::filesystem::path file() const { return folder_ / "wpa_supplicant.conf"; }
    void write(const std::string& text) const { std::ofstream(file()) << text; }

    const TemporaryFolder folder_{"kaz-test-"};
};

TEST_F(ConfigFile, KeepsEveryByteOfSsidAndSecrets) {
    SavedConfig config;
    for (const std::string ssid : {"Home", "a\"b\\c", "l\xc3\xa9", "\xff\xfe", "two\nlines", " "}) {
        NetworkConfig network;
        ASSERT_TRUE(network.setAll({{"ssid", ssid.empty() ? Setting(ssid) : Setting(ByteSetting{ssid})},
                                    {"psk", "pass \" word"},
                                    {"priority", std::int64_t{2}}},
                                   methods));
        config.networks.push_back(network);
    }
    writeConfig(file(), config);
    const SavedConfig again = readConfig(file(), methods);
    ASSERT_EQ(again.networks.size(), config.networks.size());
    EXPECT_TRUE(again.updateConfig);
    for (std::size_t i = 0; i < again.networks.size(); ++i) {
        EXPECT_EQ(again.networks.at(i).stored(), config.networks.at(i).stored());
    }
}

TEST_F(ConfigFile, ReadsWhatTheRealSupplicantWrites) {
    write(
        "# written by "
        "hand\nctrl_interface=/run/wpa\nap_scan=0\nupdate_config=1\n\nnetwork={\n\tssid=\"Home\"\n"
        "\tpsk=\"password\"\n\tpriority=7\n\tdisabled=1\n}\n\nnetwork={\n\tssid=6cc3a9\n\tkey_mgmt=NONE\n}"
        "\n");
    const SavedConfig config = readConfig(file(), methods);
    EXPECT_TRUE(config.updateConfig);
    ASSERT_EQ(config.networks.size(), 2U);
    EXPECT_EQ(config.networks.at(0).ssid(), "Home");
    EXPECT_EQ(config.networks.at(0).number("priority"), 7);
    EXPECT_FALSE(config.networks.at(0).enabled());
    EXPECT_EQ(config.networks.at(1).ssid(), "l\xc3\xa9");
    EXPECT_TRUE(config.networks.at(1).enabled());
}

TEST_F(ConfigFile, MayNotBeUpdatedUnlessItSaysSo) {
    write("network={\n\tssid=\"Home\"\n\tkey_mgmt=NONE\n}\n");
    EXPECT_FALSE(readConfig(file(), methods).updateConfig);
}

TEST_F(ConfigFile, LeavesOutANetworkThatCannotBe) {
    write("network={\n\tssid=\"Home\"\n\tpsk=\"short\"\n}\nnetwork={\n\tssid=\"Cafe\"\n\tkey_mgmt=NONE\n}\n");
    const SavedConfig config = readConfig(file(), methods);
    ASSERT_EQ(config.networks.size(), 1U);
    EXPECT_EQ(config.networks.front().ssid(), "Cafe");
}

TEST_F(ConfigFile, SaysWhichFileItCannotReadOrWrite) {
    EXPECT_THROW(readConfig(file(), methods), std::runtime_error);
    try {
        writeConfig(folder_ / "no folder/file", {});
        FAIL() << "wrote it";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("no folder"));
    }
}

}  // namespace
}  // namespace kaz::sim::test
