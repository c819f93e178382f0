// Tests that kazwifictl tells what is wrong, each cause with a message of its own, and never claims what it did not do.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "integration/kazwifictl/command_fixture.h"
#include "support/files/files.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

class Trouble : public CommandFixture {
  protected:
    void refuse(const std::string& peer, const std::string& member, const std::string& error) {
        device().orderFault({.peer = peer, .member = member, .errorName = error});
    }

    void fails(int status, const std::vector<std::string>& arguments, const std::string& because,
               const std::string& input = {}) {
        const Finished result = runs(status, arguments, input);
        EXPECT_TRUE(has(result.err, because)) << result.err;
    }

    // As the kernel shows it.
    void block(const std::string& kind) {
        const auto folder = file("root/sys/class/net/wlan0/phy80211/rfkill4");
        std::filesystem::create_directories(folder);
        for (const std::string each : {"soft", "hard"}) {
            writeFile(folder / each, each == kind ? "1\n" : "0\n");
        }
    }

    const std::string denied = "org.freedesktop.DBus.Error.AccessDenied";
};

TEST_F(Trouble, OffFailsWhenSystemdRefusesAlthoughTheChoiceIsSaved) {
    start();
    refuse("systemd", "StopUnit", denied);
    const Finished result = runs(1, {"off"});
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(has(result.err, "the choice is saved, but wpa_supplicant was not stopped")) << result.err;
    EXPECT_TRUE(has(result.err, "systemd does not let this user start or stop")) << result.err;
    EXPECT_TRUE(has(readFile(file("kaz.conf")), "wifi=off"));
    EXPECT_EQ(device().unitState(), "active");
    const Finished json = run({"off", "--json"});
    EXPECT_TRUE(has(json.out, R"("ok":false,"enabled":false,"running":true)")) << json.out;
}

TEST_F(Trouble, OffFailsWithoutABusAlthoughTheChoiceIsSaved) {
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
    fails(4, {"off"},
          "the choice is saved, but wpa_supplicant was not stopped: the system bus cannot be reached");
    EXPECT_TRUE(has(readFile(file("kaz.conf")), "wifi=off"));
}

TEST_F(Trouble, StatusDoesNotClaimThatTheRadioIsOffWhenItCannotAsk) {
    start();
    runs(0, {"off"});
    refuse("systemd", "", denied);
    const Finished result = runs(4, {"status"});
    EXPECT_EQ(result.out, "Wi-Fi               switched off; whether the radio is off is unknown\n");
    EXPECT_TRUE(has(result.err, "does not tell this user whether wpa_supplicant runs")) << result.err;
    device().clearFaults();
    EXPECT_EQ(runs(0, {"status"}).out, "Wi-Fi               off\n");
}

TEST_F(Trouble, OnSaysAtOnceWhySystemdRefused) {
    neighbourhood.unitActive = false;
    start();
    const std::vector<std::pair<std::string, std::string>> cases{
        {denied, "systemd does not let this user start or stop wpa_supplicant"},
        {"org.freedesktop.systemd1.UnitMasked", "is masked; try: systemctl unmask wpa_supplicant.service"},
        {"org.freedesktop.systemd1.NoSuchUnit", "wpa_supplicant.service does not exist"},
        {"org.freedesktop.systemd1.LoadFailed", "systemd refused it; try: systemctl status"},
    };
    for (const auto& [error, because] : cases) {
        refuse("systemd", "StartUnit", error);
        fails(1, {"on"}, because);
        device().clearFaults();
    }
}

TEST_F(Trouble, EveryReasonForAMissingStackHasItsOwnMessage) {
    start();
    const std::vector<std::string> list{"list", "--start-wait", "0.2"};
    refuse("supplicant", "", denied);
    fails(4, list, "the policy of the system bus does not let this user talk to wpa_supplicant");
    EXPECT_TRUE(has(run({"status"}).out, "on, but it cannot be used"));
    device().clearFaults();
    device().removeInterface();
    fails(4, list, "wpa_supplicant has no Wi-Fi interface");
    device().addInterface();
    refuse("systemd", "", "org.freedesktop.DBus.Error.ServiceUnknown");
    fails(4, list, "systemd is not on the system bus");
    device().clearFaults();
    device().setAutoRestart(false);
    device().crashSupplicant();
    fails(4, list, "wpa_supplicant has failed; try: journalctl -u wpa_supplicant.service");
    device().setUnitState("inactive", "dead");
    fails(4, list, "wpa_supplicant does not run; try: kazwifictl on");
}

TEST_F(Trouble, ASupplicantThatHangsIsNotBlamedOnSystemd) {
    start();
    device().orderFault({.peer = "supplicant", .kind = sim::FaultKind::noReply});
    fails(4, {"status"}, "wpa_supplicant does not answer; try: systemctl restart wpa_supplicant.service");
    const auto program = inTerminal({"status"});
    EXPECT_TRUE(program->waitFor("waiting for wpa_supplicant..."));
    EXPECT_TRUE(program->waitFor("wpa_supplicant does not answer; still waiting...")) << program->out();
    EXPECT_FALSE(has(program->out(), "try:")) << "it may only be slow";
    program->wait();
    EXPECT_FALSE(has(screenOf(program->out()), "waiting")) << program->out();
}

TEST_F(Trouble, ASlowSupplicantIsWaitedFor) {
    start();
    device().orderFault({.peer = "supplicant",
                         .nth = 1,
                         .kind = sim::FaultKind::delay,
                         .delay = std::chrono::milliseconds(2500)});
    const auto program = inTerminal({"status"});
    EXPECT_TRUE(program->waitFor("waiting for wpa_supplicant...")) << program->out();
    EXPECT_EQ(program->wait().status, 0) << program->out();
}

TEST_F(Trouble, ARefusedScanSaysSo) {
    start();
    refuse("supplicant", "Scan", "fi.w1.wpa_supplicant1.Interface.ScanError");
    fails(1, {"scan"}, "cannot scan: wpa_supplicant refused to scan");
}

TEST_F(Trouble, ABlockedRadioIsTheReasonOfARefusedScan) {
    start();
    refuse("supplicant", "Scan", "fi.w1.wpa_supplicant1.Interface.ScanError");
    block("soft");
    fails(4, {"scan"},
          "cannot scan: a program has blocked the radio (rfkill: soft); try: echo 0 > "
          "/sys/class/rfkill/rfkill4/soft");
    block("hard");
    fails(4, {"scan"},
          "cannot scan: a switch on the device blocks the radio (rfkill: hard); try: the switch");
}

TEST_F(Trouble, ABlockedRadioEndsAConnectBeforeItAsksForAPassword) {
    startAndScan();
    block("soft");
    fails(4, {"connect", "Home"},
          "cannot connect to \"Home\": a program has blocked the radio (rfkill: soft)");
    EXPECT_FALSE(wasCalled("AddNetwork"));
    const Finished status = runs(4, {"status", "--json"});
    EXPECT_TRUE(has(status.out, R"("radio_block":"soft")")) << status.out;
    EXPECT_TRUE(has(run({"status"}).out, "on, but the radio is blocked"));
}

TEST_F(Trouble, StatusMeasuresTheSignal) {
    startAndScan();
    connectHome();
    ASSERT_TRUE(device().setSignal(neighbourhood.accessPoints.front().bssid, -67));
    EXPECT_TRUE(has(runs(0, {"status"}).out, "-67 dBm"));
    const auto connection = nlohmann::json::parse(runs(0, {"status", "--json"}).out).at("connection");
    EXPECT_EQ(connection.at("signal_dbm"), -67);
    EXPECT_EQ(connection.at("rate_mbit"), 72);
    EXPECT_EQ(connection.at("interface"), "wlan0");
    EXPECT_EQ(connection.at("channel"), 1);
    EXPECT_EQ(connection.at("addresses"), nullptr) << "the kernel was not asked";
    EXPECT_EQ(connection.at("last_disconnect"), nullptr);
}

TEST_F(Trouble, Wpa3IsSupportedBeforeAndAfterItIsJoined) {
    startAndScan();
    EXPECT_TRUE(has(run({"list"}).out, "WPA3 personal"));
    runs(0, {"connect", "Vault", "--security", "wpa3"}, "nothing but sae\n");
    for (const std::string command : {"list", "status"}) {
        const Finished result = runs(0, {command});
        EXPECT_TRUE(has(result.out, "WPA3 personal")) << result.out;
        EXPECT_FALSE(has(result.out, "not supported")) << result.out;
    }
    const auto networks = nlohmann::json::parse(runs(0, {"list", "--json"}).out).at("networks");
    EXPECT_EQ(networks.at(0).at("security"), "wpa3");
    EXPECT_EQ(networks.at(0).at("obstacle"), nullptr);
}

TEST_F(Trouble, AFullAccessPointIsNotAWrongPassword) {
    neighbourhood.accessPoints.front().full = true;
    startAndScan();
    fails(1, {"connect", "Home"}, "the access point is full", "correct horse\n");
}

// The simulated supplicant searches for ever.
TEST_F(Trouble, AWrongSecurityIsNamedWhenTheTimeIsUp) {
    startAndScan();
    const Finished result = runs(3, {"connect", "Home", "--security", "open", "--wait", "1"});
    EXPECT_TRUE(
        has(result.err, "the network announces WPA2 personal, not open; try: kazwifictl connect Home"))
        << result.err;
    EXPECT_EQ(result.out.find("searched"), result.out.rfind("searched")) << result.out;
}

TEST_F(Trouble, TheCountryIsShownSetAndSaved) {
    start();
    EXPECT_EQ(runs(0, {"country"}).out, "wpa_supplicant      none is set\n");
    EXPECT_EQ(runs(0, {"country", "fi"}).out, "The country is FI.\n");
    EXPECT_TRUE(has(savedConfiguration(), "country=FI")) << savedConfiguration();
    EXPECT_TRUE(has(runs(0, {"country", "--json"}).out, R"("country":"FI","kernel_country":null)"));
    for (const std::string bad : {"Finland", "F", "F1", "", "../"}) {
        fails(2, {"country", bad}, "is no country; try: two letters, such as FI");
    }
    refuse("supplicant", "Set", "org.freedesktop.DBus.Error.AccessDenied");
    fails(1, {"country", "SE"}, "cannot set the country: ");
    device().clearFaults();
    EXPECT_EQ(runs(0, {"country"}).out, "wpa_supplicant      FI\n");
    runs(0, {"off"});
    fails(4, {"country"}, "cannot read the country: Wi-Fi is switched off");
}

TEST_F(Trouble, ACountryThatCannotBeSavedIsNotPraised) {
    neighbourhood.updateConfig = false;
    start();
    fails(1, {"country", "FI"},
          "the country is FI, but only until wpa_supplicant restarts: wpa_supplicant did not write its "
          "configuration");
}

TEST_F(Trouble, AMonitorEndsWhenNobodyReadsAnyMore) {
    startAndScan();
    auto program = withPipes({"monitor", "--json"});
    ASSERT_TRUE(program->waitFor("wifi"));
    program->closeOutput();
    EXPECT_EQ(program->wait().signal, SIGPIPE);
}

TEST_F(Trouble, AMonitorSaysThatThereIsNoBus) {
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
    const auto program = withPipes({"monitor"});
    EXPECT_TRUE(program->waitFor("on, the system bus cannot be reached")) << program->out();
    program->sendSignal(SIGTERM);
    program->wait();
}

TEST_F(Trouble, AMonitorSaysWhyAConnectionEnded) {
    startAndScan();
    connectHome();
    const auto program = withPipes({"monitor"});
    ASSERT_TRUE(program->waitFor("cellar")) << program->out();
    runs(0, {"disconnect"});
    EXPECT_TRUE(program->waitFor("disconnected from \"Home\": another program probably asked for it"))
        << program->out();
    runs(1, {"connect", "東京カフェ"}, "not the key\n");
    EXPECT_TRUE(program->waitFor("no connection to \"東京カフェ\": the password is probably wrong"))
        << program->out();
    EXPECT_FALSE(has(program->out(), "- ▂")) << "joining is not vanishing\n" << program->out();
    program->sendSignal(SIGTERM);
    program->wait();
}

TEST_F(Trouble, AWrongCommandLineIsADocumentToo) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--json", "nonsense"}, {"list", "extra", "--json"}, {"--json"}}) {
        const auto json = nlohmann::json::parse(runs(2, arguments).out);
        EXPECT_EQ(json.at("command"), nullptr);
        EXPECT_EQ(json.at("error").at("name"), "usage");
    }
}

TEST_F(Trouble, HelpIsACommandToo) {
    EXPECT_EQ(runs(0, {"help"}).out, runs(0, {"--help"}).out);
    EXPECT_EQ(runs(0, {"help", "connect"}).out, runs(0, {"connect", "--help"}).out);
    fails(2, {"help", "nonsense"}, "unknown command \"nonsense\"");
}

TEST_F(Trouble, AWrongArgumentIsNamedInPlainWords) {
    fails(2, {"list", "--start-wait", "abc"}, "\"abc\" is not a number of seconds from 0 to 86400");
    fails(2, {"connect", "Home", "--wait"}, "--wait needs a value");
    fails(2, {"list", "extra"}, "list takes no argument; try: kazwifictl help list");
    fails(2, {"--color", "sometimes", "list"},
          "unknown word \"sometimes\"; try: --color with auto, always or never");
}

}  // namespace
}  // namespace kaz::test
