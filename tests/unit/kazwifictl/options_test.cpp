#include "kazwifictl/input/options.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/hex.h"
#include "kazwifictl/text/ssid_text.h"

namespace kaz::ctl {
namespace {

using Arguments = std::vector<std::string>;
using std::chrono::milliseconds;

std::string joined(const Arguments& arguments) {
    std::string text;
    for (const std::string& argument : arguments) {
        text += '[' + argument + ']';
    }
    return text;
}

Options parsed(const Arguments& arguments) {
    const Parsed result = parseCommandLine(arguments);
    if (const auto* failure = std::get_if<Failure>(&result)) {
        ADD_FAILURE() << joined(arguments) << ": " << errorLine(*failure);
        return {};
    }
    return std::get<Options>(result);
}

Failure failureOf(const Arguments& arguments) {
    const Parsed result = parseCommandLine(arguments);
    const auto* failure = std::get_if<Failure>(&result);
    return failure == nullptr ? throw std::runtime_error(joined(arguments) + " is accepted") : *failure;
}

TEST(Options, FindEveryCommand) {
    for (const std::string& name : commandNames()) {
        Arguments arguments{name};
        if (name == "connect" || name == "forget" || name == "report") {
            arguments.emplace_back("Home");
        }
        EXPECT_EQ(nameOf(parsed(arguments).command), name);
    }
    EXPECT_EQ(parsed({}).command, Command::prompt);
}

TEST(Options, TakeGeneralOnesBeforeAndAfterTheCommand) {
    for (const Arguments& arguments : {Arguments{"--json", "--color", "never", "-v", "list"},
                                       Arguments{"list", "--json", "--color", "never", "-v"},
                                       Arguments{"list", "--json", "--colour=never", "--verbose"}}) {
        const Options options = parsed(arguments);
        EXPECT_EQ(options.command, Command::list) << joined(arguments);
        EXPECT_TRUE(options.json) << joined(arguments);
        EXPECT_TRUE(options.verbose) << joined(arguments);
        EXPECT_EQ(options.colour, ColourChoice::never) << joined(arguments);
    }
}

TEST(Options, TakeAnOptionalFileToSimulate) {
    EXPECT_EQ(parsed({"list"}).simulate, std::nullopt);
    EXPECT_EQ(parsed({"--simulate", "list"}).simulate, "");
    EXPECT_EQ(parsed({"--simulate=air.json", "list"}).simulate, "air.json");
    EXPECT_EQ(parsed({"list", "--simulate"}).command, Command::list);
    EXPECT_EQ(parsed({"--simulate"}).command, Command::prompt);
}

TEST(Options, TakeEverythingAboutANetwork) {
    const Options options = parsed({"connect",
                                    "Campus",
                                    "--security",
                                    "enterprise",
                                    "--hidden",
                                    "--identity",
                                    "me",
                                    "--anonymous-identity",
                                    "anon",
                                    "--eap",
                                    "PEAP",
                                    "--phase2",
                                    "MSCHAPV2",
                                    "--password-file",
                                    "-",
                                    "--wait",
                                    "1.5",
                                    "--keep",
                                    "--ca-file",
                                    "ca.pem",
                                    "--domain",
                                    "example.org",
                                    "--client-cert",
                                    "own.pem",
                                    "--private-key",
                                    "key.pem"});
    EXPECT_EQ(options.ssid, "Campus");
    EXPECT_EQ(options.connect.security, wifi::SecurityMode::enterprise);
    EXPECT_TRUE(options.connect.hidden);
    EXPECT_EQ(options.connect.identity, "me");
    EXPECT_EQ(options.connect.anonymousIdentity, "anon");
    EXPECT_EQ(options.connect.eapMethod, "PEAP");
    EXPECT_EQ(options.connect.phase2Method, "MSCHAPV2");
    EXPECT_EQ(options.connect.caFile, "ca.pem");
    EXPECT_EQ(options.connect.domain, "example.org");
    EXPECT_EQ(options.connect.clientCert, "own.pem");
    EXPECT_EQ(options.connect.privateKey, "key.pem");
    EXPECT_EQ(options.connect.passwordFile, "-");
    EXPECT_EQ(options.connect.wait, milliseconds(1500));
    EXPECT_TRUE(options.connect.keep);
    EXPECT_TRUE(options.connect.describesNetwork());
    EXPECT_FALSE(parsed({"connect", "Home", "--wait", "0"}).connect.describesNetwork());
    for (const char* option : {"--ca-file", "--domain", "--client-cert", "--private-key"}) {
        EXPECT_TRUE(parsed({"connect", "Home", option, "x"}).connect.describesNetwork()) << option;
    }
}

TEST(Options, TakeAnySsid) {
    const std::vector<std::pair<Arguments, std::string>> cases{
        {{"connect", "My Home"}, "My Home"},
        {{"connect", "list"}, "list"},
        {{"connect", "on"}, "on"},
        {{"forget", "forget"}, "forget"},
        {{"connect", ""}, ""},
        {{"connect", "--", "-dash"}, "-dash"},
        {{"connect", "--", "--json"}, "--json"},
        {{"connect", "[a,b]"}, "[a,b]"},
        {{"connect", "a,b"}, "a,b"},
        {{"connect", "%%"}, "%%"},
        {{"connect", "'quoted'"}, "'quoted'"},
        {{"connect", "\"x\""}, "\"x\""},
        {{"connect", "{}"}, "{}"},
        {{"connect", "a=b"}, "a=b"},
        {{"connect", "\x1b[31m"}, "\x1b[31m"},
        {{"connect", "\xff\xfe"}, "\xff\xfe"},
        {{"connect", "--hex", "486f6d65"}, "Home"},
        {{"forget", "00ff", "--hex"}, std::string("\0\xff", 2)},
        {{"connect", "/x"}, "/x"},
        {{"connect", "123"}, "123"},
        {{"connect", "-"}, "-"},
    };
    for (const auto& [arguments, ssid] : cases) {
        EXPECT_EQ(toHex(parsed(arguments).ssid), toHex(ssid)) << joined(arguments);
    }
}

TEST(Options, RefuseWhatTheyDoNotUnderstand) {
    const std::vector<Arguments> cases{
        {"nonsense"},
        {"--nonsense"},
        {"connect"},
        {"forget"},
        {"connect", "a", "b"},
        {"list", "extra"},
        {"list", "scan"},
        {"--color", "sometimes", "list"},
        {"connect", "a", "--security", "wpa9"},
        {"connect", "a", "--wait", "soon"},
        {"connect", "a", "--wait", "-1"},
        {"connect", "a", "--password"},
        {"connect", "a", "--password", "secret"},
        {"connect", "--hex", "4"},
        {"connect", "--hex", "xy"},
        {"status", "--hidden"},
        {"--start-wait", "x", "status"},
    };
    for (const Arguments& arguments : cases) {
        const Failure failure = failureOf(arguments);
        EXPECT_EQ(failure.code, ExitCode::usage) << joined(arguments);
        EXPECT_FALSE(failure.why.empty()) << joined(arguments);
        EXPECT_FALSE(failure.advice.empty()) << joined(arguments);
        EXPECT_EQ(errorLine(failure).find('\n'), std::string::npos) << errorLine(failure);
    }
}

TEST(Options, DoNotRepeatEscapeSequencesInAnError) {
    EXPECT_EQ(errorLine(failureOf({"\x1b[31mred"})).find('\x1b'), std::string::npos);
}

TEST(Options, NeverRepeatAPasswordGivenAsAnArgument) {
    const Failure failure = failureOf({"connect", "Home", "--password", "correct horse"});
    EXPECT_EQ(errorLine(failure).find("horse"), std::string::npos);
}

void expectToFitAScreen(const std::string& text, const std::string& name) {
    EXPECT_LE(std::count(text.begin(), text.end(), '\n'), 24) << name;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), 80U) << name << ": " << line;
    }
}

TEST(Options, ShowHelpThatFitsAScreenAndHasExamples) {
    const auto help = std::get<Message>(parseCommandLine({"--help"})).text;
    expectToFitAScreen(help, "--help");
    EXPECT_NE(help.find("Examples:"), std::string::npos);
    for (const std::string& name : commandNames()) {
        EXPECT_NE(help.find(name), std::string::npos) << name;
        const Parsed result = parseCommandLine({name, "--help"});
        ASSERT_TRUE(std::holds_alternative<Message>(result)) << name;
        expectToFitAScreen(std::get<Message>(result).text, name);
    }
    EXPECT_TRUE(std::holds_alternative<Message>(parseCommandLine({"--version"})));
}

TEST(Options, AtThePromptKeepWhatTheProgramWasCalledWith) {
    Options base;
    base.json = true;
    base.startWait = milliseconds(7);
    const Parsed result = parsePromptLine({"connect", "Home", "--wait", "2"}, base);
    ASSERT_TRUE(std::holds_alternative<Options>(result));
    const auto& options = std::get<Options>(result);
    EXPECT_EQ(options.command, Command::connect);
    EXPECT_EQ(options.connect.wait, milliseconds(2000));
    EXPECT_EQ(options.startWait, milliseconds(7));
    EXPECT_TRUE(options.json);
    EXPECT_TRUE(std::holds_alternative<Failure>(parsePromptLine({"--simulate"}, base)));
}

}  // namespace
}  // namespace kaz::ctl
