// Tests what happens to saved settings, to a link that is up, and to names that were not typed exactly.
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "integration/kazwifictl/command_fixture.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

const std::string cancelKey = "\x03";

class Replacing : public CommandFixture {
  protected:
    Replacing() { environment["NO_COLOR"] = "1"; }

    std::unique_ptr<RunningProgram> showing(const std::string& text,
                                            const std::vector<std::string>& arguments) {
        auto program = inTerminal(arguments, 200);
        waitFor(*program, text);
        return program;
    }

    static std::string endOf(RunningProgram& program, int status) {
        EXPECT_EQ(program.wait().status, status) << program.out();
        return screenOf(program.out());
    }
};

TEST_F(Replacing, ASavedNetworkIsReplacedOnlyOnRequest) {
    save("Home", "correct horse");
    startAndScan();
    const Finished result = runs(2, {"connect", "Home", "--password-file", "-"}, "correct mouse\n");
    EXPECT_TRUE(has(result.err, "new settings delete the saved ones even if they do not work")) << result.err;
    EXPECT_TRUE(has(result.err, "--replace")) << result.err;
    EXPECT_FALSE(wasCalled("AddNetwork"));
    runs(0, {"connect", "Home"});
    // Also while it is in use: the link tells its security.
    runs(2, {"connect", "Home", "--password-file", "-"}, "correct mouse\n");
    runs(0, {"connect", "Home", "--replace"}, "correct horse\n");
    EXPECT_TRUE(wasCalled("AddNetwork"));
}

TEST_F(Replacing, AQuestionOnATerminalSaysWhatIsLost) {
    save("Home", "correct horse");
    startAndScan();
    const std::vector<std::string> connect{"connect", "Home", "--security", "wpa2"};
    const auto refused = showing("Replace the saved settings? [y/N] ", connect);
    refused->send("\n");
    EXPECT_TRUE(has(endOf(*refused, 1), "the saved settings are kept; try: kazwifictl connect Home"));
    EXPECT_FALSE(wasCalled("AddNetwork"));
    const auto agreed = showing("New settings delete the saved ones, even if they do not work.", connect);
    converse(*agreed, {{"y\n", "Password for \"Home\": "}, {"correct horse\n", "Connected to"}});
    endOf(*agreed, 0);
}

TEST_F(Replacing, AWrongPasswordCanBeTypedAgain) {
    startAndScan();
    const auto program = showing("Password for", {"connect", "Home"});
    converse(*program, {{"correct mouse\n", "the password is probably wrong"},
                        {"", "Password for \"Home\", empty to give up: "},
                        {"correct horse\n", "Connected to"}});
    const std::string screen = endOf(*program, 0);
    EXPECT_FALSE(has(screen, "horse"));
    EXPECT_TRUE(has(savedConfiguration(), "correct horse"));
    EXPECT_FALSE(has(savedConfiguration(), "mouse")) << savedConfiguration();
}

TEST_F(Replacing, ASavedPasswordThatIsWrongStaysUnlessAnotherIsTyped) {
    save("Home", "correct mouse");
    startAndScan();
    const std::string question = "New password for \"Home\", empty to keep the saved one: ";
    const auto kept = showing(question, {"connect", "Home"});
    kept->send("\n");
    EXPECT_TRUE(has(endOf(*kept, 1), "try: kazwifictl connect --replace Home"));
    const auto changed = showing(question, {"connect", "Home"});
    changed->send("correct horse\n");
    EXPECT_TRUE(has(endOf(*changed, 0), "Connected to \"Home\""));
}

TEST_F(Replacing, WhatToTryCanBePasted) {
    startAndScan();
    const Finished hidden =
        runs(1, {"connect", "Speakeasy", "--hidden", "--security", "wpa3"}, "joe did not\n");
    EXPECT_TRUE(has(hidden.err, "try: kazwifictl connect --hidden --security wpa3 Speakeasy\n"))
        << hidden.err;
    runs(0, {"connect", "--hidden", "--security", "wpa3", "Speakeasy"}, "joe sent me\n");
    const Finished campus =
        runs(1, {"connect", "Campus", "--identity", "ada", "--eap", "PEAP"}, "no engine\n");
    EXPECT_TRUE(has(campus.err, "try: kazwifictl connect --eap PEAP Campus\n")) << campus.err;
    const auto program = showing("Identity for \"Campus\": ", {"connect", "--eap", "PEAP", "Campus"});
    converse(*program, {{"ada\n", "Password for \"Campus\": "}, {"engine no 2\n", "Connected to"}});
    endOf(*program, 0);
}

TEST_F(Replacing, ANameMayBeTypedAsItIsShown) {
    neighbourhood.accessPoints.push_back(accessPoint("\"quoted\" \\ back", sim::Security::open, -79));
    startAndScan();
    EXPECT_TRUE(has(runs(0, {"list"}).out, R"("quoted" \\ back)"));
    runs(0, {"connect", R"("quoted" \\ back)"});
    runs(0, {"forget", R"("\"quoted\" \\ back")"});
    EXPECT_FALSE(has(savedConfiguration(), "quoted")) << savedConfiguration();
}

TEST_F(Replacing, ANameThatIsNotFoundLeadsToASimilarOne) {
    save("Home", "correct horse");
    startAndScan();
    EXPECT_TRUE(has(runs(5, {"connect", "hme"}).err, "try: kazwifictl connect Home"));
    EXPECT_TRUE(has(runs(5, {"connect", "CAFÉ GRÖSSE", "--replace"}).err, "kazwifictl list"));
    EXPECT_TRUE(has(runs(5, {"connect", "--replace", "vaullt"}).err, "try: kazwifictl connect Vault"));
    EXPECT_TRUE(has(runs(5, {"forget", "hone"}).err, "try: kazwifictl forget Home"));
}

TEST_F(Replacing, AConnectionThatIsUnderWayIsOnlyWaitedFor) {
    save("Home", "correct horse");
    neighbourhood.times.dhcp = std::chrono::hours(1);
    startAndScan();
    ASSERT_TRUE(eventually([&] { return device().supplicantState() == "completed"; }));
    device().forgetCalls();
    const Finished late = runs(3, {"connect", "Home", "--wait", "0.3"});
    EXPECT_TRUE(has(late.out, "Waiting for \"Home\": the device connects to it already")) << late.out;
    const auto program = showing("getting an address", {"connect", "Home"});
    program->send(cancelKey);
    EXPECT_EQ(program->wait().signal, SIGINT);
    EXPECT_TRUE(has(screenOf(program->out()), "the radio link to \"Home\" stays up")) << program->out();
    for (const char* member : {"SelectNetwork", "Disconnect", "RemoveNetwork"}) {
        EXPECT_FALSE(wasCalled(member)) << member;
    }
    device().setOnlineState("online");
    runs(0, {"connect", "Home"});
    EXPECT_EQ(device().supplicantState(), "completed");
}

TEST_F(Replacing, ASavedNetworkOutOfRangeIsNotReplacedUnasked) {
    save("Far away", "never in range");
    startAndScan();
    const Finished result = runs(2, {"connect", "Far away", "--security", "wpa2"}, "another key\n");
    EXPECT_TRUE(has(result.err, "new settings delete the saved ones")) << result.err;
    EXPECT_FALSE(wasCalled("AddNetwork"));
    EXPECT_TRUE(has(runs(5, {"connect", "far awy"}).err, "try: kazwifictl connect 'Far away'"));
}

TEST_F(Replacing, SavedNetworksAreListedWhereverTheyAre) {
    save("Far away", "never in range");
    save("Home", "correct horse");
    startAndScan();
    runs(0, {"connect", "Home"});
    const std::string list = runs(0, {"list", "--saved"}).out;
    EXPECT_TRUE(has(list, "* Home ")) << list;
    EXPECT_TRUE(has(list, "  Far away  -              -              not in range\n")) << list;
    EXPECT_FALSE(has(list, "Vault")) << list;
    EXPECT_EQ(runs(0, {"list", "--saved", "--names"}).out, "Home\nFar away\n");
    const std::string json = runs(0, {"list", "--saved", "--json"}).out;
    EXPECT_TRUE(has(json, R"("ssid":"Far away","ssid_hex":"4661722061776179","signal_dbm":null)")) << json;
    EXPECT_TRUE(has(json, R"("in_range":false}])")) << json;
}

TEST_F(Replacing, AllNetworksCanBeForgottenAtOnce) {
    save("Far away", "never in range");
    save("Home", "correct horse");
    startAndScan();
    const std::string out = runs(0, {"forget", "--all"}).out;
    EXPECT_TRUE(has(out, "Forgot \"Far away\".\n")) << out;
    EXPECT_TRUE(has(out, "Forgot \"Home\".\n")) << out;
    EXPECT_FALSE(has(savedConfiguration(), "network={")) << savedConfiguration();
    EXPECT_EQ(runs(0, {"forget", "--all"}).out, "No network is saved.\n");
    EXPECT_EQ(runs(0, {"list", "--saved"}).out, "No network is saved.\n");
    runs(2, {"forget"});
    runs(2, {"forget", "--all", "Home"});
}

TEST_F(Replacing, AStateCanBeWaitedFor) {
    startAndScan();
    runs(0, {"wait", "--for", "on"});
    runs(0, {"wait", "--for", "disconnected"});
    EXPECT_TRUE(
        has(runs(3, {"wait", "--timeout", "0.2"}).err, "the state \"connected\" is not reached after 0.2 s"));
    const auto program = withPipes({"wait", "--json"});
    connectHome();
    EXPECT_EQ(program->wait().status, 0);
    EXPECT_TRUE(has(program->out(), R"("ok":true,"state":"connected")")) << program->out();
    runs(0, {"off"});
    runs(0, {"wait", "--for", "off"});
    EXPECT_TRUE(has(runs(3, {"wait", "--for", "on", "--timeout", "0.2"}).err, "Wi-Fi is switched off"));
    runs(2, {"wait", "--for", "rain"});
}

TEST_F(Replacing, CtrlCSaysWhatIsLeft) {
    neighbourhood.times.handshake = std::chrono::hours(1);
    startAndScan();
    const auto program = showing("Password for", {"connect", "Home"});
    converse(*program, {{"correct horse\n", "joining..."}, {cancelKey, "Cancelled; \"Home\" is not saved."}});
    EXPECT_EQ(program->wait().signal, SIGINT);
}

TEST_F(Replacing, TheStatusAndTheListTellTheSecurityOfTheNetworkInUse) {
    startAndScan();
    runs(0, {"connect", "Vault", "--security", "wpa3"}, "nothing but sae\n");
    EXPECT_TRUE(has(runs(0, {"list"}).out, "WPA3 personal  ")) << run({"list"}).out;
    const std::string status = runs(0, {"status"}).out;
    EXPECT_TRUE(has(status, "Security            WPA3 personal\n")) << status;
    EXPECT_TRUE(has(status, "\nChannel             1 (2412 MHz)\n")) << status;
    EXPECT_TRUE(has(runs(0, {"status", "--json"}).out, R"("security":"wpa3","bssid":"02:)"));
}

}  // namespace
}  // namespace kaz::test
