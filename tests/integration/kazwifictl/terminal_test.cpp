// Tests what happens only on a terminal: questions, echo, Ctrl-C, the prompt.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "integration/kazwifictl/command_fixture.h"
#include "support/waiting/waiting.h"

namespace kaz::test {
namespace {

const std::string ctrlC = "\x03";
const std::string ctrlD = "\x04";
const std::string ctrlZ = "\x1a";
const std::string up = "\x1b[A";
const std::string prompt = "kazwifi> ";

void expectStatus(int status, RunningProgram& program, const std::string& typed) {
    program.send(typed);
    EXPECT_EQ(program.wait().status, status) << program.out();
}

class TerminalTest : public CommandFixture {
  protected:
    TerminalTest() { environment["NO_COLOR"] = "1"; }

    // A connect to "Home" that asks for the password.
    std::unique_ptr<RunningProgram> asking() {
        return showing("Password for \"Home\": ", {"connect", "Home"});
    }
    std::unique_ptr<RunningProgram> atPrompt() { return showing(prompt, {}); }

    // Starts a device on which a connect stays in the stage of joining.
    void startSlow() {
        neighbourhood.times.handshake = std::chrono::hours(1);
        startAndScan();
    }

    // Each signal ends the program, which then gives the terminal back.
    static void expectEchoAfter(int signal, RunningProgram& program) {
        EXPECT_FALSE(program.echoes());
        program.sendSignal(signal);
        ASSERT_TRUE(eventually([&] { return program.echoes(); })) << signal;
        EXPECT_EQ(program.wait().signal, signal);
    }

    // The program gives the terminal back while Ctrl-Z stops it, and then shows `shown` again.
    static void expectStopAndContinue(RunningProgram& program, const std::string& shown) {
        EXPECT_FALSE(program.echoes());
        program.send(ctrlZ);
        ASSERT_TRUE(program.waitForStop());
        EXPECT_TRUE(program.echoes());
        program.sendSignal(SIGCONT);
        waitFor(program, shown);
        EXPECT_FALSE(program.echoes());
    }

  private:
    std::unique_ptr<RunningProgram> showing(const std::string& text,
                                            const std::vector<std::string>& arguments) {
        auto program = inTerminal(arguments);
        waitFor(*program, text);
        return program;
    }
};

TEST_F(TerminalTest, APasswordIsAskedForAndNotShown) {
    start();
    const auto program = asking();
    EXPECT_FALSE(program->echoes());
    converse(*program, {{"correct horse\n", "Connecting to"}});
    EXPECT_TRUE(program->echoes());
    EXPECT_EQ(program->wait().status, 0) << program->out();
    EXPECT_FALSE(has(program->out(), "horse"));
    EXPECT_TRUE(has(screenOf(program->out()), "Connected to \"Home\""));
}

TEST_F(TerminalTest, CtrlCAtThePasswordLeavesTheTerminalAndTheDeviceAlone) {
    start();
    const auto program = asking();
    program->send("half a pass" + ctrlC);
    ASSERT_TRUE(eventually([&] { return program->echoes(); }));
    EXPECT_EQ(program->wait().signal, SIGINT);
    EXPECT_FALSE(wasCalled("AddNetwork"));
    EXPECT_FALSE(has(program->out(), "half"));
}

TEST_F(TerminalTest, AnySignalAtThePasswordGivesTheEchoBack) {
    start();
    for (const int signal : {SIGTERM, SIGHUP, SIGQUIT}) {
        expectEchoAfter(signal, *asking());
    }
}

TEST_F(TerminalTest, CtrlZAtThePasswordGivesTheEchoBackUntilItContinues) {
    start();
    const auto program = asking();
    expectStopAndContinue(*program, "Password for");
    expectStatus(0, *program, "correct horse\n");
}

TEST_F(TerminalTest, EndOfFileAtThePasswordIsAnEmptyPassword) {
    start();
    expectStatus(6, *asking(), ctrlD);
}

TEST_F(TerminalTest, CtrlCDuringAConnectLeavesNothingHalfDone) {
    save("Elsewhere", "somewhere else");
    startSlow();
    const auto program = asking();
    converse(*program, {{"correct horse\n", "joining..."}});
    program->send(ctrlC);
    ASSERT_TRUE(eventually([&] { return wasCalled("SaveConfig"); }));
    EXPECT_EQ(program->wait().signal, SIGINT) << program->out();
    EXPECT_TRUE(wasCalled("RemoveNetwork"));
    EXPECT_FALSE(has(savedConfiguration(), "Home")) << savedConfiguration();
    EXPECT_TRUE(has(savedConfiguration(), "Elsewhere")) << savedConfiguration();
    EXPECT_FALSE(has(savedConfiguration(), "disabled=1")) << savedConfiguration();
}

TEST_F(TerminalTest, ATerminatedConnectLeavesNothingHalfDone) {
    startSlow();
    const auto program = asking();
    converse(*program, {{"correct horse\n", "joining..."}});
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
    const auto program = atPrompt();
    converse(*program, {{"scan\n", "cellar"},
                        {"", prompt},
                        {"connect Home\n", "Password for"},
                        {"correct horse\n", "dBm, after"},
                        {"", prompt},
                        {"forget Home\n", "Forgot \"Home\""},
                        {"", prompt},
                        {"nonsense\n", "unknown command \"nonsense\""},
                        {"", prompt}});
    expectStatus(2, *program, "quit\n");
    EXPECT_FALSE(has(readFile(file("state") / "kazwifictl/history"), "horse"));
    EXPECT_TRUE(has(readFile(file("state") / "kazwifictl/history"), "connect Home"));
    EXPECT_TRUE(has(savedConfiguration(), "update_config")) << savedConfiguration();
    EXPECT_FALSE(has(savedConfiguration(), "Home")) << savedConfiguration();
}

TEST_F(TerminalTest, ThePromptTakesWhatWasTypedAhead) {
    startAndScan();
    const auto program = atPrompt();
    converse(*program,
             {{"connect Home\n", "Password for"},
              {"correct horse\nkazwifictl forget Home\nnonsense\nlist --nonsense\n" + ctrlD, "Connected to"},
              {"", "Forgot \"Home\""},
              {"", "unknown command \"nonsense\""},
              {"", "unknown option --nonsense"}});
    EXPECT_EQ(program->wait().status, 2) << program->out();
}

TEST_F(TerminalTest, ThePromptCompletesCommandsAndSsids) {
    startAndScan();
    const auto program = atPrompt();
    converse(*program, {{"conn\tOld\t", "'Old Router in the cellar' "}, {ctrlC, "^C"}, {"", prompt}});
    expectStatus(0, *program, ctrlD);
}

TEST_F(TerminalTest, ThePromptRemembersLinesOfAnEarlierOne) {
    start();
    {
        const auto program = atPrompt();
        converse(*program, {{"status\n", "Connection"}, {"", prompt}});
        expectStatus(0, *program, ctrlD);
    }
    const auto program = atPrompt();
    converse(*program, {{up, "status"}, {"\n", "Connection"}});
    expectStatus(0, *program, ctrlD);
}

TEST_F(TerminalTest, ThePromptTellsWhatHappensMeanwhile) {
    startAndScan();
    connectHome();
    const auto program = atPrompt();
    runs(0, {"off"});
    converse(
        *program,
        {{"", "wpa_supplicant does not run"}, {"list\n", "Wi-Fi is switched off"}, {"on\n", "Wi-Fi is on."}});
    expectStatus(0, *program, ctrlD);
}

TEST_F(TerminalTest, ThePromptWritesAnEventAboveAHalfTypedLine) {
    start();
    const auto program = atPrompt();
    converse(*program, {{"st", "st"}});
    runs(0, {"off"});
    converse(*program, {{"", "wpa_supplicant does not run\r\n"},
                        {"", prompt + "st"},
                        {"atus\n", "Wi-Fi               off"}});
    expectStatus(0, *program, ctrlD);
}

TEST_F(TerminalTest, ThePromptWritesJsonAndHelp) {
    startAndScan();
    const auto program = atPrompt();
    converse(*program, {{"list --json\n", R"("command":"list","ok":true,"networks":[{"ssid":"Home")"},
                        {"", prompt},
                        {"nonsense --json\n", R"("command":null,"ok":false)"},
                        {"", "unknown command \"nonsense\""},
                        {"", prompt},
                        {"help connect\n", "Connect to a network."},
                        {"", prompt},
                        {"status\n", "Connection          not connected"}});
    expectStatus(0, *program, ctrlD);
}

TEST_F(TerminalTest, CtrlZAtThePromptGivesTheTerminalBackAndKeepsTheLine) {
    start();
    const auto program = atPrompt();
    converse(*program, {{"st", "st"}});
    expectStopAndContinue(*program, prompt + "st");
    converse(*program, {{"atus\n", "Connection          not connected"}});
    expectStatus(0, *program, ctrlD);
}

TEST_F(TerminalTest, CtrlCEndsACommandButNotThePrompt) {
    startSlow();
    const auto program = atPrompt();
    converse(*program, {{"connect Home\n", "Password for"},
                        {"correct horse\n", "joining..."},
                        {ctrlC, "interrupted"},
                        {"", prompt},
                        {"monitor\n", "on, wpa_supplicant runs"},
                        {ctrlC, "^C\r\n"},
                        {"", prompt}});
    expectStatus(0, *program, "quit\n");
    EXPECT_TRUE(wasCalled("RemoveNetwork"));
}

TEST_F(TerminalTest, ThePromptGivesTheTerminalBackWhateverEndsIt) {
    start();
    for (const int signal : {SIGTERM, SIGHUP}) {
        expectEchoAfter(signal, *atPrompt());
    }
}

TEST_F(TerminalTest, WithoutATerminalThereIsNoPrompt) {
    start();
    const Finished result = runs(2, {});
    EXPECT_TRUE(has(result.err, "no command given")) << result.err;
}

}  // namespace
}  // namespace kaz::test
