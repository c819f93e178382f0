// Tests all ways to connect, and that everything is done and saved when the command returns.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "integration/kazwifictl/command_fixture.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

using Connecting = CommandFixture;

// Whether the text contains a password of the tests below.
bool tellsAPassword(const std::string& text) {
    for (const std::string password : {"horse", "donkey", "sumimasen", "engine"}) {
        if (has(text, password)) {
            return true;
        }
    }
    return false;
}

TEST_F(Connecting, IsSavedWhenTheCommandReturns) {
    startAndScan();
    connectHome();
    EXPECT_TRUE(has(savedConfiguration(), "Home")) << savedConfiguration();
    EXPECT_FALSE(has(savedConfiguration(), "disabled=1")) << savedConfiguration();
    EXPECT_EQ(device().supplicantState(), "completed");
}

TEST_F(Connecting, TakesTheSecurityFromTheList) {
    startAndScan();
    runs(0, {"connect", "東京カフェ"}, "sumimasen\n");
    runs(0, {"connect", "Old Router in the cellar"}, "abcde\n");
    runs(0, {"connect", "Café Größe"});
}

TEST_F(Connecting, LooksAroundByItselfForANetworkThatIsNotListedYet) {
    start();
    runs(0, {"connect", "Home"}, "correct horse\n");
}

TEST_F(Connecting, JoinsANetworkWhoseNameIsNotText) {
    neighbourhood.accessPoints.push_back(
        accessPoint("Late\xfe\x02", sim::Security::wpa2, -40, "correct horse"));
    startAndScan();
    const std::string shown = R"(Late\xfe\x02)";
    EXPECT_TRUE(has(runs(1, {"connect", shown}, "wrong donkey\n").err, "the password is probably wrong"));
    EXPECT_FALSE(has(savedConfiguration(), "4c617465fe02")) << "a network that refused is not kept";
    runs(6, {"connect", shown}, "short\n");
    runs(0, {"connect", shown}, "correct horse\n");
    EXPECT_TRUE(has(savedConfiguration(), "ssid=4c617465fe02")) << savedConfiguration();
    EXPECT_TRUE(has(runs(0, {"status"}).out, "connected to \"Late\\xfe\\x02\""));
    runs(0, {"disconnect"});
    runs(0, {"connect", "--hex", "4c617465fe02"});
    runs(0, {"connect", "--replace", shown}, "correct horse\n");
    EXPECT_EQ(savedConfiguration().find("4c617465fe02"), savedConfiguration().rfind("4c617465fe02"));
    runs(0, {"forget", shown});
    EXPECT_FALSE(has(savedConfiguration(), "4c617465fe02")) << savedConfiguration();
    EXPECT_TRUE(has(
        runs(1, {"connect", "--hex", "ff", "--security", "enterprise", "--identity", "ada"}, "engine\n").err,
        "its name is not text"));
}

TEST_F(Connecting, FindsAHiddenNetworkThatIsDescribed) {
    start();
    runs(0, {"connect", "Speakeasy", "--hidden", "--security", "wpa3"}, "joe sent me\n");
    runs(0, {"disconnect"});
    // The network is saved, but not listed.
    runs(0, {"connect", "Speakeasy"});
}

TEST_F(Connecting, SpeaksEap) {
    startAndScan();
    runs(0,
         {"connect", "Campus", "--identity", "ada", "--anonymous-identity", "anonymous", "--eap", "PEAP",
          "--phase2", "MSCHAPV2"},
         "engine no 2\n");
}

TEST_F(Connecting, SaysWhatOfTheServerIsNotVerified) {
    startAndScan();
    const std::vector<std::string> plain{"connect",    "Campus",     "--identity", "ada",
                                         "--security", "enterprise", "--replace"};
    const auto with = [&plain](std::vector<std::string> more) {
        more.insert(more.begin(), plain.begin(), plain.end());
        return more;
    };
    EXPECT_TRUE(has(runs(0, plain, "engine no 2\n").out, "the server is not verified"));
    const Finished ofCa = runs(0, with({"--ca-file", "/etc/campus.pem"}), "engine no 2\n");
    EXPECT_TRUE(has(ofCa.out, "any server of this CA is trusted")) << ofCa.out;
    const Finished verified =
        runs(0, with({"--ca-file", "/etc/campus.pem", "--domain", "example.org"}), "engine no 2\n");
    EXPECT_FALSE(has(verified.out, "server")) << verified.out;
    EXPECT_TRUE(has(runs(0, with({"--json"}), "engine no 2\n").out, R"("server":"not-verified")"));
    runs(1, with({"--ca-file", "/etc/other.pem"}), "engine no 2\n");
}

TEST_F(Connecting, TakesACertificateAndAKeyWithItsPassword) {
    startAndScan();
    writeFile(file("password"), "key secret\n");
    const Finished result =
        runs(0, {"-v", "connect", "Campus", "--identity", "device", "--client-cert", "/etc/device.pem",
                 "--private-key", "/etc/device.key", "--password-file", file("password")});
    EXPECT_TRUE(has(savedConfiguration(), "private_key_passwd=\"key secret\"")) << savedConfiguration();
    EXPECT_FALSE(has(result.out + result.err, "key secret"));
}

TEST_F(Connecting, NeedsOnlyTheNameOfASavedNetwork) {
    save("Home", "correct horse");
    neighbourhood.configuredNetworks.front().emplace_back("disabled", std::int64_t{1});
    startAndScan();
    EXPECT_TRUE(has(runs(0, {"connect", "Home"}).out, "Connect"));
    EXPECT_FALSE(wasCalled("AddNetwork"));
}

TEST_F(Connecting, ReadsThePasswordFromAFile) {
    startAndScan();
    writeFile(file("key"), "correct horse\n");
    runs(0, {"connect", "Home", "--password-file", file("key")});
}

TEST_F(Connecting, LeavesNoTraceOfANewNetworkThatRefuses) {
    startAndScan();
    runs(1, {"connect", "Home"}, "wrong password\n");
    EXPECT_FALSE(has(savedConfiguration(), "Home")) << savedConfiguration();
    EXPECT_FALSE(has(runs(0, {"list", "--json"}).out, "\"saved\":true"));
}

TEST_F(Connecting, KeepsARefusedNetworkWhenAskedTo) {
    startAndScan();
    runs(1, {"connect", "Home", "--keep"}, "wrong password\n");
    EXPECT_TRUE(has(savedConfiguration(), "Home")) << savedConfiguration();
}

TEST_F(Connecting, ContinuesInTheBackgroundWithWait0) {
    timeScale = 0.2;
    startAndScan();
    const Finished result = runs(0, {"connect", "Home", "--wait", "0"}, "correct horse\n");
    EXPECT_TRUE(has(result.out, "continues in the background")) << result.out;
    EXPECT_TRUE(eventually([&] { return has(savedConfiguration(), "Home"); }));
    EXPECT_TRUE(eventually([&] { return device().onlineState() == "online"; }));
}

TEST_F(Connecting, ReportsAFailureBeforeItContinuesInTheBackground) {
    startAndScan();
    runs(6, {"connect", "Home", "--wait", "0"}, "short\n");
}

TEST_F(Connecting, NeverWritesThePasswordAnywhere) {
    startAndScan();
    const auto monitor = withPipes({"-v", "monitor", "--json"});
    ASSERT_TRUE(monitor->waitFor("cellar"));
    const Finished plain = runs(0, {"-v", "connect", "東京カフェ"}, "sumimasen\n");
    std::vector<Finished> all{
        plain,
        runs(1, {"-v", "--json", "connect", "Vault", "--security", "wpa3"}, "donkey donkey\n"),
        runs(1, {"-v", "connect", "Vault", "--security", "wpa3", "--keep"}, "donkey donkey\n"),
        runs(0,
             {"-v", "--json", "connect", "Campus", "--identity", "ada", "--anonymous-identity", "anonymous"},
             "engine no 2\n"),
        runs(0, {"-v", "--json", "connect", "Home"}, "correct horse\n"),
        runs(0, {"-v", "list"}),
        runs(0, {"-v", "list", "--json"}),
        runs(0, {"-v", "status"}),
        runs(0, {"-v", "status", "--json"}),
    };
    ASSERT_TRUE(monitor->waitFor(R"("status":"connected","ssid":"Home")")) << monitor->out();
    monitor->sendSignal(SIGTERM);
    all.push_back({monitor->wait(), monitor->out(), monitor->err()});

    EXPECT_TRUE(has(plain.err, "Connecting to ssid=\"東京カフェ\"")) << plain.err;
    for (const Finished& each : all) {
        EXPECT_FALSE(tellsAPassword(each.out)) << each.out;
        EXPECT_FALSE(tellsAPassword(each.err)) << each.err;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(file(""))) {
        const bool ofTheSupplicant = entry.path().filename() == "supplicant.conf";
        EXPECT_EQ(tellsAPassword(readFile(entry.path())), ofTheSupplicant) << entry.path();
    }
}

TEST_F(Connecting, ShowsThePasswordToNobodyWhoLooksAtTheProcess) {
    neighbourhood.times.handshake = std::chrono::hours(24);  // so that the process runs while it is inspected
    startAndScan();
    writeFile(file("key"), "correct horse\n");
    const std::vector<std::string> connect{"connect", "Home"};
    const auto look = [](const std::string& source, const auto& program,
                         const std::vector<std::pair<std::string, std::string>>& turns) {
        SCOPED_TRACE(source);
        converse(*program, turns);
        EXPECT_TRUE(has(program->told("cmdline"), "kazwifictl"));
        EXPECT_TRUE(has(program->told("environ"), "DBUS_SYSTEM_BUS_ADDRESS"));
        for (const std::string name : {"cmdline", "environ", "comm"}) {
            EXPECT_FALSE(tellsAPassword(program->told(name))) << program->told(name);
        }
        program->sendSignal(SIGTERM);
        EXPECT_EQ(program->wait().signal, SIGTERM);
        EXPECT_FALSE(tellsAPassword(program->out() + program->err())) << program->out() << program->err();
    };
    const std::pair<std::string, std::string> answer{"correct horse\n", "Connecting to"};
    look("from the standard input", withPipes(connect), {answer});
    look("from a file", withPipes({"connect", "Home", "--password-file", file("key")}),
         {{"", "Connecting to"}});
    look("asked for on a terminal", inTerminal(connect), {{"", "Password for"}, answer});
    look("asked for at the prompt", inTerminal({}),
         {{"", "kazwifi> "}, {"connect Home\n", "Password for"}, answer});
}

TEST_F(Connecting, LeavesTheMetricsOfTheDeviceAlone) {
    environment["KAZ_METRICS_FILE"] = file("metrics");
    startAndScan();
    connectHome();
    EXPECT_FALSE(std::filesystem::exists(file("metrics")));
}

TEST_F(Connecting, IsForgottenAndSavedWhenTheCommandReturns) {
    save("Far away", "never in range");
    startAndScan();
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
