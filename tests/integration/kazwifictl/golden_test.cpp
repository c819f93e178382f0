// Compares the output of each command with the files in golden/. KAZ_UPDATE_GOLDEN=1 rewrites these files; review
// the diff before you commit it.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "integration/kazwifictl/command_fixture.h"
#include "support/files/files.h"

namespace kaz::test {
namespace {

// Replaces what differs between runs: times and the stage "searched".
std::string masked(const std::string& text) {
    static const std::vector<std::pair<std::regex, std::string>> masks{
        {std::regex(R"(\d+\.\d s\b)"), "N.N s"},
        {std::regex(R"(\s+N\.N s)"), " N.N s"},
        {std::regex(R"("ms(_ago)?":\d+)"), "\"ms$1\":N"},
        {std::regex(R"(\d\d:\d\d:\d\d\.\d{3})"), "HH:MM:SS.mmm"},
        {std::regex(R"((^|\n)\d\d:\d\d:\d\d )"), "$1HH:MM:SS "},
        {std::regex(R"(\d{4}-\d\d-\d\dT)"), "YYYY-MM-DDT"},
        // The supplicant scans again before it joins only if its results are old.
        {std::regex(R"(  searched N\.N s\n)"), ""},
        {std::regex(R"(\{"stage":"search","ms":N\},?)"), ""},
    };
    std::string result = text;
    for (const auto& [pattern, replacement] : masks) {
        result = std::regex_replace(result, pattern, replacement);
    }
    return result;
}

void expectGolden(const std::string& name, const std::string& text) {
    const std::filesystem::path path = std::filesystem::path(KAZWIFICTL_GOLDEN) / name;
    if (::getenv("KAZ_UPDATE_GOLDEN") != nullptr) {
        writeFile(path, masked(text));
    }
    EXPECT_EQ(masked(text), readFile(path)) << "in " << name;
}

std::string everythingOf(const Finished& run) {
    return run.out + (run.err.empty() ? "" : "--- stderr\n" + run.err) + "--- status " +
           std::to_string(run.ending.status) + "\n";
}

// plain, colour, narrow: a terminal with 48 columns, and json.
const std::vector<std::string> forms{"plain", "colour", "narrow", "json"};

std::vector<std::string> inForm(const std::string& form, std::vector<std::string> arguments) {
    if (form == "json") {
        arguments.emplace_back("--json");
    } else if (form != "plain") {
        arguments.insert(arguments.end(), {"--color", form == "colour" ? "always" : "never"});
    }
    return arguments;
}

struct Case {
    std::string name;
    std::vector<std::string> arguments;
    std::string input;
    bool connected = false;  // before the command runs
};

void PrintTo(const Case& each, std::ostream* out) {
    *out << each.name;
}

std::vector<Case> cases() {
    return {
        {"status", {"status"}, "", true},
        {"status-disconnected", {"status"}, ""},
        {"on", {"on"}, ""},
        {"off", {"off"}, ""},
        {"scan", {"scan"}, ""},
        {"list", {"list"}, "", true},
        {"connect", {"connect", "Home"}, "correct horse\n"},
        {"connect-refused", {"connect", "Home"}, "wrong password\n"},
        {"connect-unknown", {"connect", "Elsewhere"}, ""},
        {"disconnect", {"disconnect"}, "", true},
        {"disconnect-already", {"disconnect"}, ""},
        {"forget", {"forget", "Home"}, "", true},
        {"forget-unknown", {"forget", "Vault"}, ""},
    };
}

class Golden : public CommandFixture, public testing::WithParamInterface<std::tuple<Case, std::string>> {
  protected:
    std::string narrow(const Case& each) {
        const auto program = inTerminal(inForm("narrow", each.arguments), 48);
        if (!each.input.empty()) {
            EXPECT_TRUE(program->waitFor("Password for"));
            program->send(each.input);
            if (each.name == "connect-refused") {
                EXPECT_TRUE(program->waitFor("empty to give up"));
                program->send("\n");
            }
        }
        const Ending ending = program->wait();
        return screenOf(program->out()) + "--- status " + std::to_string(ending.status) + "\n";
    }
};

TEST_P(Golden, OutputIsAsItWas) {
    const auto& [each, form] = GetParam();
    startAndScan();
    if (each.connected) {
        connectHome();
    }
    expectGolden(each.name + "." + form, form == "narrow"
                                             ? narrow(each)
                                             : everythingOf(run(inForm(form, each.arguments), each.input)));
}

std::string nameOfCase(const testing::TestParamInfo<Golden::ParamType>& which) {
    std::string name = std::get<0>(which.param).name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

auto allInForm(const char* form) {
    return testing::Combine(testing::ValuesIn(cases()), testing::Values(std::string(form)));
}

// One suite per form, because ctest runs the tests of a suite one after another.
INSTANTIATE_TEST_SUITE_P(Plain, Golden, allInForm("plain"), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Colour, Golden, allInForm("colour"), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Narrow, Golden, allInForm("narrow"), nameOfCase);
INSTANTIATE_TEST_SUITE_P(Json, Golden, allInForm("json"), nameOfCase);

class GoldenMonitor : public CommandFixture, public testing::WithParamInterface<std::string> {
  protected:
    // Starts a monitor and waits for the last network of the first state. On a busy machine the first state may arrive
    // late: then the monitor begins with a part of it and shows the rest as changes. In this case, starts another one.
    std::unique_ptr<RunningProgram> begun(const std::vector<std::string>& arguments) {
        constexpr int tries = 50;
        std::unique_ptr<RunningProgram> program;
        for (int i = 0; i < tries; ++i) {
            program = GetParam() == "narrow" ? inTerminal(arguments, 48) : withPipes(arguments);
            if (!program->waitFor("cellar")) {
                return nullptr;
            }
            if (!has(program->out(), notYet_)) {
                break;
            }
        }
        return program;
    }

  private:
    const std::string notYet_ =
        GetParam() == "json" ? R"("connection","status":"disconnected")" : "not connected";
};

TEST_P(GoldenMonitor, OutputIsAsItWas) {
    startAndScan();
    connectHome();
    const auto program = begun(inForm(GetParam(), {"monitor"}));
    ASSERT_NE(program, nullptr);
    runs(0, {"off"});
    ASSERT_TRUE(program->waitFor("cellar")) << program->out();
    program->sendSignal(SIGINT);
    const Ending ending = program->wait();
    expectGolden("monitor." + GetParam(),
                 screenOf(program->out()) + "--- status " + std::to_string(ending.status) + "\n");
}

INSTANTIATE_TEST_SUITE_P(EveryForm, GoldenMonitor, testing::ValuesIn(forms),
                         [](const auto& which) { return which.param; });

}  // namespace
}  // namespace kaz::test
