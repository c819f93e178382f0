// The installed kazwifictl, without another user of the library.
#include "vm/command.h"
#include "vm/neighbourhood.h"
#include "vm/supplicant_file.h"

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

}  // namespace
}  // namespace kaz::vm
