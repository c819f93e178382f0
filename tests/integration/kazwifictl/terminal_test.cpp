// Tests what happens only on a terminal: questions, echo, Ctrl-C, the prompt.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "integration/kazwifictl/command_fixture.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

class TerminalTest : public CommandFixture {
  protected:
    TerminalTest() { environment["NO_COLOR"] = "1"; }
};

const std::string ctrlC = "\x03";
const std::string ctrlD = "\x04";
const std::string ctrlZ = "\x1a";
const std::string up = "\x1b[A";

TEST_F(TerminalTest, APasswordIsAskedForAndNotShown) {
    start();
    const auto program = inTerminal({"connect", "Home"});
    ASSERT_TRUE(program->waitFor("Password for \"Home\": "));
    EXPECT_FALSE(program->echoes());
    program->send("correct horse\n");
    ASSERT_TRUE(program->waitFor("Connecting to")) << program->out();
    EXPECT_TRUE(program->echoes());
    EXPECT_EQ(program->wait().status, 0) << program->out();
    EXPECT_FALSE(has(program->out(), "horse"));
    EXPECT_TRUE(has(screenOf(program->out()), "Connected to \"Home\""));
}

TEST_F(TerminalTest, CtrlCAtThePasswordLeavesTheTerminalAndTheDeviceAlone) {
    start();
    const auto program = inTerminal({"connect", "Home"});
    ASSERT_TRUE(program->waitFor("Password for"));
    program->send("half a pass" + ctrlC);
    const RunningProgram& same = *program;
    ASSERT_TRUE(eventually([&] { return same.echoes(); }));
    const Ending ending = program->wait();
    EXPECT_EQ(ending.signal, SIGINT);
    EXPECT_FALSE(wasCalled("AddNetwork"));
    EXPECT_FALSE(has(program->out(), "half"));
}

TEST_F(TerminalTest, AnySignalAtThePasswordGivesTheEchoBack) {
    start();
    for (const int signal : {SIGTERM, SIGHUP, SIGQUIT}) {
        const auto program = inTerminal({"connect", "Home"});
        ASSERT_TRUE(program->waitFor("Password for"));
        EXPECT_FALSE(program->echoes());
        program->sendSignal(signal);
        ASSERT_TRUE(eventually([&] { return program->echoes(); })) << signal;
        EXPECT_EQ(program->wait().signal, signal);
    }
}

TEST_F(TerminalTest, CtrlZAtThePasswordGivesTheEchoBackUntilItContinues) {
    start();
    const auto program = inTerminal({"connect", "Home"});
    ASSERT_TRUE(program->waitFor("Password for"));
    program->send(ctrlZ);
    ASSERT_TRUE(program->waitForStop());
    EXPECT_TRUE(program->echoes());
    program->sendSignal(SIGCONT);
    ASSERT_TRUE(program->waitFor("Password for"));
    EXPECT_FALSE(program->echoes());
    program->send("correct horse\n");
    EXPECT_EQ(program->wait().status, 0) << program->out();
}

TEST_F(TerminalTest, EndOfFileAtThePasswordIsAnEmptyPassword) {
    start();
    const auto program = inTerminal({"connect", "Home"});
    ASSERT_TRUE(program->waitFor("Password for"));
    program->send(ctrlD);
    EXPECT_EQ(program->wait().status, 6) << program->out();
}

TEST_F(TerminalTest, CtrlCDuringAConnectLeavesNothingHalfDone) {
    save("Elsewhere", "somewhere else");
    timeScale = 1;  // so that the attempt is in progress when the key is pressed
    neighbourhood.times.handshake = std::chrono::seconds(60);
    start();
    runs(0, {"scan"});
    const auto program = inTerminal({"connect", "Home"});
    ASSERT_TRUE(program->waitFor("Password for"));
    program->send("correct horse\n");
    ASSERT_TRUE(program->waitFor("joining...")) << program->out();
    program->send(ctrlC);
    ASSERT_TRUE(eventually([&] { return wasCalled("SaveConfig"); }));
    EXPECT_EQ(program->wait().signal, SIGINT) << program->out();
    EXPECT_TRUE(wasCalled("RemoveNetwork"));
    EXPECT_FALSE(has(savedConfiguration(), "Home")) << savedConfiguration();
    EXPECT_TRUE(has(savedConfiguration(), "Elsewhere")) << savedConfiguration();
    EXPECT_FALSE(has(savedConfiguration(), "disabled=1")) << savedConfiguration();
}

TEST_F(TerminalTest, ATerminatedConnectLeavesNothingHalfDone) {
    timeScale = 1;
    neighbourhood.times.handshake = std::chrono::seconds(60);
    start();
    runs(0, {"scan"});
    const auto program = inTerminal({"connect", "Home"});
    ASSERT_TRUE(program->waitFor("Password for"));
    program->send("correct horse\n");
    ASSERT_TRUE(program->waitFor("joining..."));
    program->sendSignal(SIGTERM);
    EXPECT_EQ(program->wait().signal, SIGTERM);
    EXPECT_TRUE(wasCalled("RemoveNetwork"));
    EXPECT_TRUE(wasCalled("SaveConfig"));
}

TEST_F(TerminalTest, ColoursComeByThemselvesAndGoWithNoColor) {
    environment["NO_COLOR"] = "";
    start();
    const auto output = [&](const std::vector<std::string>& arguments) {
        const auto program = inTerminal(arguments);
        program->wait();
        return program->out();
    };
    EXPECT_TRUE(has(output({"scan"}), "\x1b[32m"));
    EXPECT_FALSE(has(output({"list", "--color", "never"}), "\x1b[3"));
    environment["NO_COLOR"] = "1";
    EXPECT_FALSE(has(output({"list"}), "\x1b[3"));
    EXPECT_TRUE(has(output({"list", "--color", "always"}), "\x1b[3"));
    environment["NO_COLOR"] = "";
    environment["TERM"] = "dumb";
    EXPECT_FALSE(has(output({"list"}), "\x1b[3"));
    environment["TERM"] = "xterm";
    EXPECT_FALSE(has(run({"list"}).out, "\x1b"));
}

TEST_F(TerminalTest, BarsAreAsciiWithoutUtf8) {
    start();
    environment["LC_ALL"] = "C";
    const std::string text = runs(0, {"scan"}).out;
    EXPECT_TRUE(has(text, "####  -48 dBm")) << text;
    EXPECT_TRUE(has(text, "Caf\\u{e9} Gr\\u{f6}\\u{df}e")) << text;
    EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char letter) { return letter >= 0; })) << text;
}

TEST_F(TerminalTest, ThePromptRunsCommandsOneAfterTheOther) {
    start();
    const auto program = inTerminal({});
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("scan\n");
    ASSERT_TRUE(program->waitFor("cellar")) << program->out();
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("connect Home\n");
    ASSERT_TRUE(program->waitFor("Password for"));
    program->send("correct horse\n");
    ASSERT_TRUE(program->waitFor("dBm, after")) << program->out();
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("forget Home\n");
    ASSERT_TRUE(program->waitFor("Forgot \"Home\"")) << program->out();
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("nonsense\n");
    ASSERT_TRUE(program->waitFor("unknown command \"nonsense\"")) << program->out();
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("quit\n");
    EXPECT_EQ(program->wait().status, 2);
    EXPECT_FALSE(has(readFile(file("state") / "kazwifictl/history"), "horse"));
    EXPECT_TRUE(has(readFile(file("state") / "kazwifictl/history"), "connect Home"));
    EXPECT_TRUE(has(savedConfiguration(), "update_config")) << savedConfiguration();
    EXPECT_FALSE(has(savedConfiguration(), "Home")) << savedConfiguration();
}

TEST_F(TerminalTest, ThePromptTakesWhatWasTypedAhead) {
    start();
    runs(0, {"scan"});
    const auto program = inTerminal({});
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("connect Home\n");
    ASSERT_TRUE(program->waitFor("Password for"));
    program->send("correct horse\nkazwifictl forget Home\nnonsense\nlist --nonsense\n" + ctrlD);
    ASSERT_TRUE(program->waitFor("Connected to")) << program->out();
    ASSERT_TRUE(program->waitFor("Forgot \"Home\"")) << program->out();
    ASSERT_TRUE(program->waitFor("unknown command \"nonsense\"")) << program->out();
    ASSERT_TRUE(program->waitFor("unknown option --nonsense")) << program->out();
    EXPECT_EQ(program->wait().status, 2) << program->out();
}

TEST_F(TerminalTest, ThePromptCompletesCommandsAndSsids) {
    start();
    runs(0, {"scan"});
    const auto program = inTerminal({});
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("conn\tOld\t");
    ASSERT_TRUE(program->waitFor("'Old Router in the cellar' ")) << program->out();
    program->send(ctrlC);
    ASSERT_TRUE(program->waitFor("^C"));
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send(ctrlD);
    EXPECT_EQ(program->wait().status, 0) << program->out();
}

TEST_F(TerminalTest, ThePromptRemembersLinesOfAnEarlierOne) {
    start();
    {
        const auto program = inTerminal({});
        ASSERT_TRUE(program->waitFor("kazwifi> "));
        program->send("status\n");
        ASSERT_TRUE(program->waitFor("Connection"));
        ASSERT_TRUE(program->waitFor("kazwifi> "));
        program->send(ctrlD);
        EXPECT_EQ(program->wait().status, 0);
    }
    const auto program = inTerminal({});
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send(up);
    ASSERT_TRUE(program->waitFor("status"));
    program->send("\n");
    ASSERT_TRUE(program->waitFor("Connection"));
    program->send(ctrlD);
    EXPECT_EQ(program->wait().status, 0);
}

TEST_F(TerminalTest, ThePromptTellsWhatHappensMeanwhile) {
    start();
    runs(0, {"scan"});
    connectHome();
    const auto program = inTerminal({});
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    runs(0, {"off"});
    ASSERT_TRUE(program->waitFor("wpa_supplicant does not run")) << program->out();
    program->send("list\n");
    ASSERT_TRUE(program->waitFor("Wi-Fi is switched off")) << program->out();
    program->send("on\n");
    ASSERT_TRUE(program->waitFor("Wi-Fi is on.")) << program->out();
    program->send(ctrlD);
    EXPECT_EQ(program->wait().status, 0);
}

TEST_F(TerminalTest, ThePromptWritesAnEventAboveAHalfTypedLine) {
    start();
    const auto program = inTerminal({});
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("st");
    ASSERT_TRUE(program->waitFor("st"));
    runs(0, {"off"});
    ASSERT_TRUE(program->waitFor("wpa_supplicant does not run\r\n")) << program->out();
    ASSERT_TRUE(program->waitFor("kazwifi> st")) << program->out();
    program->send("atus\n");
    ASSERT_TRUE(program->waitFor("Wi-Fi               off")) << program->out();
    program->send(ctrlD);
    EXPECT_EQ(program->wait().status, 0) << program->out();
}

TEST_F(TerminalTest, CtrlZAtThePromptGivesTheTerminalBackAndKeepsTheLine) {
    start();
    const auto program = inTerminal({});
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("st");
    ASSERT_TRUE(program->waitFor("st"));
    EXPECT_FALSE(program->echoes());
    program->send(ctrlZ);
    ASSERT_TRUE(program->waitForStop());
    EXPECT_TRUE(program->echoes());
    program->sendSignal(SIGCONT);
    ASSERT_TRUE(program->waitFor("kazwifi> st")) << program->out();
    EXPECT_FALSE(program->echoes());
    program->send("atus\n");
    ASSERT_TRUE(program->waitFor("Connection          not connected")) << program->out();
    program->send(ctrlD);
    EXPECT_EQ(program->wait().status, 0) << program->out();
}

TEST_F(TerminalTest, CtrlCEndsACommandButNotThePrompt) {
    timeScale = 1;
    neighbourhood.times.handshake = std::chrono::seconds(60);
    start();
    runs(0, {"scan"});
    const auto program = inTerminal({});
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("connect Home\n");
    ASSERT_TRUE(program->waitFor("Password for"));
    program->send("correct horse\n");
    ASSERT_TRUE(program->waitFor("joining..."));
    program->send(ctrlC);
    ASSERT_TRUE(program->waitFor("interrupted")) << program->out();
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("monitor\n");
    ASSERT_TRUE(program->waitFor("on, wpa_supplicant runs")) << program->out();
    program->send(ctrlC);
    ASSERT_TRUE(program->waitFor("^C\r\n")) << program->out();
    ASSERT_TRUE(program->waitFor("kazwifi> "));
    program->send("quit\n");
    EXPECT_EQ(program->wait().status, 0) << program->out();
    EXPECT_TRUE(wasCalled("RemoveNetwork"));
}

TEST_F(TerminalTest, ThePromptGivesTheTerminalBackWhateverEndsIt) {
    start();
    for (const int signal : {SIGTERM, SIGHUP}) {
        const auto program = inTerminal({});
        ASSERT_TRUE(program->waitFor("kazwifi> "));
        program->sendSignal(signal);
        ASSERT_TRUE(eventually([&] { return program->echoes(); })) << signal;
        EXPECT_EQ(program->wait().signal, signal);
    }
}

TEST_F(TerminalTest, WithoutATerminalThereIsNoPrompt) {
    start();
    const Finished result = runs(2, {});
    EXPECT_TRUE(has(result.err, "no command given")) << result.err;
}

}  // namespace
}  // namespace kaz::test
