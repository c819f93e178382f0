// Tests every exit status, and that an error is one line on stderr.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "integration/kazwifictl/command_fixture.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

class ExitStatus : public CommandFixture {
  protected:
    void fails(int status, const std::vector<std::string>& arguments, const std::string& because,
               const std::string& input = {}) {
        isFailure(runs(status, arguments, input), because);
    }

    static void isFailure(const Finished& result, const std::string& because) {
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        EXPECT_EQ(result.err.rfind("kazwifictl: ", 0), 0U) << result.err;
        EXPECT_NE(result.err.find(because), std::string::npos) << result.err;
        EXPECT_NE(result.err.find("; try: "), std::string::npos) << result.err;
    }
};

TEST_F(ExitStatus, Is0WhenItIsDone) {
    startAndScan();
    connectHome();
    runs(0, {"status"});
    runs(0, {"list"});
    runs(0, {"connect", "Home"});
    runs(0, {"disconnect"});
    runs(0, {"disconnect"});
    runs(0, {"forget", "Home"});
    for (const std::string word : {"off", "off", "on", "on", "--help", "--version"}) {
        runs(0, {word});
    }
}

TEST_F(ExitStatus, Is1WhenItFailed) {
    startAndScan();
    fails(1, {"connect", "Home", "--password-file", "-"}, "the password is probably wrong",
          "wrong password\n");
    fails(1, {"connect", "Home", "--password-file", "/nonexistent"}, "No such file");
    fails(1, {"connect", "Campus", "--identity", "ada", "--eap", "PEAP", "--phase2", "MSCHAPV2"},
          "rejected the identity or the password", "no such engine\n");
}

TEST_F(ExitStatus, Is1WhenNothingCanBeSimulated) {
    fails(1, {"--simulate=" + (file("nowhere.json")).string(), "list"}, "nowhere.json: No such file");
}

TEST_F(ExitStatus, Is1WhenNothingCanBeSaved) {
    neighbourhood.updateConfig = false;
    startAndScan();
    fails(1, {"connect", "Home"}, "connected, but not saved", "correct horse\n");
    fails(1, {"forget", "Home"}, "only until wpa_supplicant restarts");
    environment["KAZ_CONFIG_FILE"] = "/proc/nonexistent/kaz.conf";
    fails(1, {"off"}, "could not be written");
}

TEST_F(ExitStatus, Is2ForWhatItDoesNotUnderstand) {
    start();
    fails(2, {"nonsense"}, "unknown command \"nonsense\"");
    fails(2, {"connect"}, "the name of the network is missing");
    fails(2, {"connect", "Home", "--password", "correct horse"}, "never an argument");
    fails(2, {"connect", "Speakeasy", "--hidden"}, "--security");
    runs(0, {"scan"});
    fails(2, {"connect", "Campus"}, "--identity");
}

TEST_F(ExitStatus, Is3WhenTheTimeIsUp) {
    neighbourhood.times.dhcp = std::chrono::hours(1);
    startAndScan();
    // A busy machine may need more time for the link.
    Finished result;
    std::string wait;
    for (int seconds = 1; seconds <= 32; seconds *= 2) {
        wait = std::to_string(seconds);
        result = runs(3, {"connect", "Home", "--wait", wait}, "correct horse\n");
        if (!has(result.err, "no connection")) {
            break;
        }
    }
    isFailure(result, "there is no address after " + wait + " s");
    EXPECT_NE(savedConfiguration().find("Home"), std::string::npos) << "the link was up";
    runs(0, {"forget", "Home"});
}

TEST_F(ExitStatus, Is3WhenAnAttemptTakesTooLong) {
    neighbourhood.times.handshake = std::chrono::hours(1);
    startAndScan();
    fails(3, {"connect", "Home", "--wait", "1"}, "no connection after 1 s", "correct horse\n");
    EXPECT_EQ(savedConfiguration().find("Home"), std::string::npos) << savedConfiguration();
    EXPECT_TRUE(wasCalled("SaveConfig"));
}

TEST_F(ExitStatus, Is4WhenThereIsNoWifi) {
    neighbourhood.unitActive = false;
    start();
    for (const std::string command : {"list", "scan", "disconnect", "status"}) {
        fails(4, {command, "--start-wait", "0.2"}, "wpa_supplicant");
    }
    fails(4, {"connect", "Home", "--start-wait", "0.2"}, "wpa_supplicant", "correct horse\n");
    fails(4, {"forget", "Home", "--start-wait", "0.2"}, "wpa_supplicant");
    runs(0, {"off"});
    fails(4, {"list"}, "Wi-Fi is switched off; try: kazwifictl on");
    runs(0, {"status"});
}

TEST_F(ExitStatus, Is4WithoutABus) {
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
    fails(4, {"list", "--start-wait", "0.2"}, "the system bus cannot be reached");
    fails(4, {"on", "--start-wait", "0.2"}, "the system bus cannot be reached");
    fails(4, {"status"}, "the system bus cannot be reached");
}

TEST_F(ExitStatus, Is5ForANetworkThatIsNotThere) {
    startAndScan();
    fails(5, {"connect", "Elsewhere"}, "not in range");
    fails(5, {"connect", "Elsewhere", "--password-file", "-"}, "not", "some password\n");
    fails(5, {"forget", "Elsewhere"}, "no network with this name is saved");
    fails(5, {"forget", "Vault"}, "no network with this name is saved");
}

TEST_F(ExitStatus, Is6ForSettingsThatBreakARule) {
    startAndScan();
    fails(6, {"connect", "Home"}, "shorter than 8 bytes", "short\n");
    fails(6, {"connect", "Home"}, "longer than 63 bytes", std::string(64, 'x') + "\n");
    fails(6, {"connect", "Old Router in the cellar"}, "5 or 13 characters", "four\n");
    fails(6, {"connect", "Vault", "--security", "wpa3"}, "the password is empty", "\n");
    fails(6, {"connect", "Vault"}, "the password is empty", "\n");
    fails(6, {"connect", std::string(33, 'x')}, "longer than 32 bytes");
    fails(6, {"connect", ""}, "the name is empty");
    fails(6, {"connect", "Campus", "--identity", "ada", "--eap", "MD5"}, "EAP method", "engine no 2\n");
    fails(6, {"connect", "Campus", "--identity", "ada", "--phase2", "X"}, "inner method", "engine no 2\n");
    fails(6, {"connect", "Campus", "--identity", "ada", "--domain", "example.org"}, "--ca-file",
          "engine no 2\n");
    fails(6, {"connect", "Campus", "--identity", "ada", "--ca-file", "/ca", "--domain", "*.org"},
          "domain name", "engine no 2\n");
    fails(6, {"connect", "Campus", "--identity", "ada", "--client-cert", "/own"}, "--private-key",
          "engine no 2\n");
    fails(6, {"connect", "Campus", "--identity", "ada", "--ca-file", "/" + std::string(900, 'x')},
          "900 bytes", "engine no 2\n");
    fails(6, {"connect", "Campus", "--identity", "ada", "--ca-file", "/ca", "--eap", "PWD"},
          "PEAP, TLS, TTLS", "engine no 2\n");
    fails(6, {"forget", ""}, "the name is empty");
    EXPECT_FALSE(wasCalled("AddNetwork"));
}

}  // namespace
}  // namespace kaz::test
