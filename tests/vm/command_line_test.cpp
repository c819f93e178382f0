// The installed kazwifictl, without another user of the library.
#include "vm/command.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <string>

namespace kaz::vm {
namespace {

class CommandLine : public ::testing::Test {
  protected:
    void SetUp() override { run("/opt/guest/device reset"); }

    static bool has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }
};

TEST_F(CommandLine, TheCommandLineScansConnectsAndForgets) {
    const std::string list = run("kazwifictl scan --json");
    EXPECT_TRUE(has(list, R"("ssid":"Kaz WPA2")")) << list;
    const std::string connected =
        run("printf 'wpa-two-secret\\n' | kazwifictl connect 'Kaz WPA2' --password-file - --json");
    EXPECT_TRUE(has(connected, R"("outcome":"connected")")) << connected;
    ASSERT_TRUE(savedNetwork("Kaz WPA2"));
    EXPECT_EQ(savedNetwork("Kaz WPA2")->at("priority"), "2");
    const std::string status = run("kazwifictl status --json");
    EXPECT_TRUE(has(status, R"("status":"connected")")) << status;
    run("kazwifictl forget 'Kaz WPA2'");
    EXPECT_TRUE(savedNetworks().empty());
}

TEST_F(CommandLine, TheCommandLineTellsThatAPasswordIsWrong) {
    const std::string output = run(
        "printf 'wrong-secret\\n' | kazwifictl connect 'Kaz WPA2' --security wpa2 --password-file - --json;"
        " test $? = 1");
    EXPECT_TRUE(has(output, R"("outcome":"refused")")) << output;
    EXPECT_TRUE(savedNetworks().empty()) << "a network that refused is not kept";
}

TEST_F(CommandLine, TheCommandLineSwitchesWifiOffAndOn) {
    run("kazwifictl off");
    EXPECT_FALSE(succeeds("systemctl is-active wpa_supplicant"));
    run("kazwifictl on");
    EXPECT_TRUE(succeeds("systemctl is-active wpa_supplicant"));
}

TEST_F(CommandLine, StatusTellsTheAddressesAndTheAgeOfTheLink) {
    run("printf 'wpa-two-secret\\n' | kazwifictl connect 'Kaz WPA2' --password-file -");
    const auto connection = nlohmann::json::parse(run("kazwifictl status --json")).at("connection");
    EXPECT_EQ(connection.at("interface"), "wlan0");
    ASSERT_FALSE(connection.at("addresses").empty());
    EXPECT_TRUE(has(run("ip -oneline address show wlan0"), connection.at("addresses").at(0)));
    EXPECT_TRUE(connection.at("linked_s").is_number());
    EXPECT_LT(connection.at("signal_dbm"), 0);
    EXPECT_GT(connection.at("rate_mbit"), 0);
    EXPECT_TRUE(has(run("kazwifictl status"), "Connected for"));
}

TEST_F(CommandLine, TheCountryIsSetAndSaved) {
    run("kazwifictl country FI");
    EXPECT_TRUE(succeeds("grep -q country=FI /etc/wpa_supplicant/device.conf"));
    const auto country = nlohmann::json::parse(run("kazwifictl country --json"));
    EXPECT_EQ(country.at("country"), "FI");
    EXPECT_TRUE(country.at("kernel_country").is_string());
    run("sed -i /country/d /etc/wpa_supplicant/device.conf; systemctl restart wpa_supplicant");
}

TEST_F(CommandLine, ANetworkWhoseNameIsNotTextIsJoined) {
    run("kazwifictl scan");
    const std::string connected = run("kazwifictl connect --hex 4b617a20c328ff --json");
    EXPECT_TRUE(has(connected, R"("outcome":"connected")")) << connected;
    EXPECT_TRUE(succeeds("grep -q ssid=4b617a20c328ff /etc/wpa_supplicant/device.conf"));
    run(R"(kazwifictl forget 'Kaz \xc3(\xff')");
    EXPECT_TRUE(savedNetworks().empty());
}

TEST_F(CommandLine, ABlockedRadioIsNamedAndMended) {
    const std::string blocked = "a program has blocked the radio (rfkill: soft)";
    run("echo 1 | tee /sys/class/net/wlan0/phy80211/rfkill*/soft");
    const std::string connect = run("kazwifictl connect 'Kaz WPA2' --security open 2>&1 || true");
    const auto scan = nlohmann::json::parse(run("kazwifictl scan --json 2>/dev/null || true"));
    const bool named = scan.contains("error") && scan.at("error").at("why") == blocked;
    // The other tests need the radio, whatever this one finds.
    run(named ? scan.at("error").at("try") : "echo 0 | tee /sys/class/net/wlan0/phy80211/rfkill*/soft");
    EXPECT_TRUE(named) << scan.dump(1);
    EXPECT_TRUE(has(connect, blocked)) << connect;
    for (int i = 0; i < 40 && !succeeds("kazwifictl scan"); ++i) {
    }
    EXPECT_TRUE(succeeds("kazwifictl scan"));
}

}  // namespace
}  // namespace kaz::vm
