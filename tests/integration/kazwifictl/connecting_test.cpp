// Connecting in all its kinds, and that what was asked for is done and saved when the command returns.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "command_fixture.h"
#include "waiting.h"

namespace kaz::test {
namespace {

using Connecting = CommandFixture;

TEST_F(Connecting, IsSavedWhenTheCommandReturns) {
    start();
    runs(0, {"scan"});
    connectHome();
    EXPECT_TRUE(has(savedConfiguration(), "Home")) << savedConfiguration();
    EXPECT_FALSE(has(savedConfiguration(), "disabled=1")) << savedConfiguration();
    EXPECT_EQ(device().supplicantState(), "completed");
}

TEST_F(Connecting, TakesTheSecurityFromTheList) {
    start();
    runs(0, {"scan"});
    runs(0, {"connect", "東京カフェ"}, "sumimasen\n");
    runs(0, {"connect", "Old Router in the cellar"}, "abcde\n");
    runs(0, {"connect", "Café Größe"});
}

TEST_F(Connecting, LooksAroundByItselfForANetworkThatIsNotListedYet) {
    start();
    runs(0, {"connect", "Home"}, "correct horse\n");
}

TEST_F(Connecting, FindsAHiddenNetworkThatIsDescribed) {
    start();
    runs(0, {"connect", "Speakeasy", "--hidden", "--security", "wpa3"}, "joe sent me\n");
    runs(0, {"disconnect"});
    // It is in no list, but saved.
    runs(0, {"connect", "Speakeasy"});
}

TEST_F(Connecting, SpeaksEap) {
    start();
    runs(0, {"scan"});
    runs(0,
         {"connect", "Campus", "--identity", "ada", "--anonymous-identity", "anonymous", "--eap", "PEAP",
          "--phase2", "MSCHAPV2"},
         "engine no 2\n");
}

TEST_F(Connecting, NeedsOnlyTheNameOfASavedNetwork) {
    save("Home", "correct horse");
    neighbourhood.configuredNetworks.front().emplace_back("disabled", std::int64_t{1});
    start();
    runs(0, {"scan"});
    EXPECT_TRUE(has(runs(0, {"connect", "Home"}).out, "Connect"));
    EXPECT_FALSE(wasCalled("AddNetwork"));
}

TEST_F(Connecting, ReadsThePasswordFromAFile) {
    start();
    runs(0, {"scan"});
    writeFile(file("key"), "correct horse\n");
    runs(0, {"connect", "Home", "--password-file", file("key")});
}

TEST_F(Connecting, LeavesNoTraceOfANewNetworkThatRefuses) {
    start();
    runs(0, {"scan"});
    runs(1, {"connect", "Home"}, "wrong password\n");
    EXPECT_FALSE(has(savedConfiguration(), "Home")) << savedConfiguration();
    EXPECT_FALSE(has(runs(0, {"list", "--json"}).out, "\"saved\":true"));
}

TEST_F(Connecting, KeepsARefusedNetworkWhenAskedTo) {
    start();
    runs(0, {"scan"});
    runs(1, {"connect", "Home", "--keep"}, "wrong password\n");
    EXPECT_TRUE(has(savedConfiguration(), "Home")) << savedConfiguration();
}

TEST_F(Connecting, GoesOnUnseenWhenNobodyWaits) {
    timeScale = 0.2;
    start();
    runs(0, {"scan"});
    const Finished result = runs(0, {"connect", "Home", "--wait", "0"}, "correct horse\n");
    EXPECT_TRUE(has(result.out, "goes on unseen")) << result.out;
    EXPECT_TRUE(eventually([&] { return has(savedConfiguration(), "Home"); }));
    EXPECT_TRUE(eventually([&] { return device().onlineState() == "online"; }));
}

TEST_F(Connecting, ReportsAFailureBeforeItGoesUnseen) {
    start();
    runs(0, {"scan"});
    runs(6, {"connect", "Home", "--wait", "0"}, "short\n");
}

TEST_F(Connecting, NeverWritesThePasswordAnywhere) {
    start();
    runs(0, {"scan"});
    const Finished good = runs(0, {"-v", "connect", "Home"}, "correct horse\n");
    const Finished bad =
        runs(1, {"-v", "--json", "connect", "Vault", "--security", "wpa3"}, "donkey donkey\n");
    EXPECT_TRUE(has(good.err, "Connecting to ssid=\"Home\"")) << good.err;
    for (const std::string& text : {good.out, good.err, bad.out, bad.err}) {
        EXPECT_FALSE(has(text, "horse")) << text;
        EXPECT_FALSE(has(text, "donkey")) << text;
    }
}

TEST_F(Connecting, LeavesTheMetricsOfTheDeviceAlone) {
    environment["KAZ_METRICS_FILE"] = file("metrics");
    start();
    runs(0, {"scan"});
    connectHome();
    EXPECT_FALSE(std::filesystem::exists(file("metrics")));
}

TEST_F(Connecting, IsForgottenAndSavedWhenTheCommandReturns) {
    save("Far away", "never in range");
    start();
    runs(0, {"scan"});
    connectHome();
    for (const std::string ssid : {"Far away", "Home"}) {
        ASSERT_TRUE(has(savedConfiguration(), ssid)) << savedConfiguration();
        runs(0, {"forget", ssid});
        EXPECT_FALSE(has(savedConfiguration(), ssid)) << savedConfiguration();
    }
}

TEST_F(Connecting, SwitchesOffAndOnForGood) {
    start();
    runs(0, {"off"});
    EXPECT_EQ(device().unitState(), "inactive");
    EXPECT_TRUE(has(readFile(file("kaz.conf")), "wifi=off"));
    runs(0, {"on"});
    EXPECT_EQ(device().unitState(), "active");
    EXPECT_TRUE(has(readFile(file("kaz.conf")), "wifi=on"));
}

TEST_F(Connecting, RunsOnASimulatedDeviceOfItsOwn) {
    writeFile(
        file("air.json"),
        R"({"access_points": [{"ssid": "Simulated", "security": "open"}], "times": {"scan": 10, "dhcp": 10}})");
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
    EXPECT_TRUE(has(runs(0, {"--simulate=" + file("air.json").string(), "scan"}).out, "Simulated"));
    runs(0, {"connect", "Simulated", "--simulate=" + file("air.json").string()});
    runs(1, {"--simulate=/nonexistent.json", "list"});
    for (const auto& entry : std::filesystem::directory_iterator(file(""))) {
        EXPECT_EQ(entry.path().filename().string().rfind("kazwifictl-", 0), std::string::npos)
            << entry.path();
    }
}

}  // namespace
}  // namespace kaz::test
