// Tests the completions in bash, fish and zsh.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "integration/kazwifictl/command_fixture.h"
#include "support/files/files.h"

namespace kaz::test {
namespace {

namespace fs = std::filesystem;

const fs::path scripts = fs::path(KAZWIFICTL_SOURCES) / "completions";

class Completion : public CommandFixture {
  protected:
    void SetUp() override {
        const std::string path = ::getenv("PATH") == nullptr ? "/usr/bin:/bin" : ::getenv("PATH");
        environment["PATH"] = fs::path(KAZWIFICTL_PROGRAM).parent_path().string() + ":" + path;
        startAndScan();
        connectHome();
    }

    std::string outputOf(const std::vector<std::string>& command) {
        RunningProgram program(command, environment);
        program.wait();
        return program.out() + program.err();
    }
};

// Calls the completion function as bash does, and prints each candidate in angle brackets.
std::string bashScript(const std::string& words) {
    return "source '" + (scripts / "kazwifictl.bash").string() + R"('
        COMP_WORDS=()" +
           words + R"()
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
        last=${COMP_WORDS[COMP_CWORD]}
        _kazwifictl kazwifictl "${last#[\"\']}" "${COMP_WORDS[COMP_CWORD - 1]}"
        printf '<%s>' "${COMPREPLY[@]}")";
}

TEST_F(Completion, WorksInBash) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"kazwifictl con", "<connect>"},
        {"kazwifictl --js", "<--json>"},
        {"kazwifictl connect Ho", "<Home>"},
        {"kazwifictl connect 東", "<東京カフェ>"},
        {"kazwifictl connect Old", "<Old\\ Router\\ in\\ the\\ cellar>"},
        {"kazwifictl connect 'Old\\ R'", "<Old\\ Router\\ in\\ the\\ cellar>"},
        {"kazwifictl connect '\"Old R'", "<Old Router in the cellar>"},
        {"kazwifictl --json connect Ho", "<Home>"},
        {"kazwifictl forget ''", "<Home>"},
        {"kazwifictl connect x --security wpa", "<wpa><wpa2><wpa3>"},
        {"kazwifictl connect x --hi", "<--hidden>"},
        {"kazwifictl list --na", "<--names>"},
    };
    for (const auto& [words, offered] : cases) {
        EXPECT_EQ(outputOf({"/bin/bash", "--norc", "-c", bashScript(words)}), offered) << words;
    }
}

TEST_F(Completion, OffersNothingInBashThatAShellWouldRun) {
    device().addAccessPoint(accessPoint("$(reboot)", sim::Security::open, -50));
    runs(0, {"scan"});
    EXPECT_EQ(outputOf({"/bin/bash", "--norc", "-c", bashScript("kazwifictl connect '\\$'")}),
              "<\\$\\(reboot\\)>");
}

TEST_F(Completion, WorksInFish) {
    const auto offered = [&](const std::string& line) {
        return outputOf(
            {"/usr/bin/fish", "--no-config", "-c",
             "source " + (scripts / "kazwifictl.fish").string() + "; complete -C \"" + line + "\""});
    };
    EXPECT_EQ(offered("kazwifictl con"), "connect\tConnect to a network\n");
    EXPECT_EQ(offered("kazwifictl connect Old"), "Old Router in the cellar\tNetwork\n");
    EXPECT_EQ(offered("kazwifictl forget "), "Home\tSaved network\n");
    EXPECT_EQ(offered("kazwifictl connect --hi"), "--hidden\tThe network does not announce its name\n");
}

// zsh completes only on a terminal, so it runs on one of its own. Ctrl-T prints the line in angle brackets and begins a
// new one.
std::string zshSettings() {
    return "fpath=('" + scripts.string() + R"(' $fpath)
        autoload -Uz compinit && compinit -u -D
        PS1='zsh%% '
        show() { zle -I; print -r -- "<$BUFFER>"; BUFFER='' }
        zle -N show && bindkey '^T' show)";
}

std::string shownLast(const std::string& output) {
    const std::size_t begin = output.rfind('<') + 1;
    return output.substr(begin, output.rfind('>') - begin);
}

TEST_F(Completion, WorksInZsh) {
    device().addAccessPoint(accessPoint("$(reboot)", sim::Security::open, -50));
    runs(0, {"scan"});
    writeFile(file(".zshrc"), zshSettings());
    environment["ZDOTDIR"] = file("");
    RunningProgram zsh({"/usr/bin/zsh", "-d", "-i"}, environment, {200, 24});
    ASSERT_TRUE(zsh.waitFor("zsh% ")) << zsh.out();
    const std::vector<std::pair<std::string, std::string>> cases{
        {"kazwifictl con", "connect "},
        {"kazwifictl --js", "--json "},
        {"kazwifictl --color=al", "--color=always "},
        {"kazwifictl connect Ho", "Home "},
        {"kazwifictl connect 東", "東京カフェ "},
        {"kazwifictl connect Old", "Old\\ Router\\ in\\ the\\ cellar "},
        {"kazwifictl connect 'Old", "'Old Router in the cellar' "},
        {"kazwifictl connect \\$", "\\$\\(reboot\\) "},
        {"kazwifictl --json connect Ho", "Home "},
        {"kazwifictl forget ", "forget Home "},
        {"kazwifictl connect x --security=op", "--security=open "},
        {"kazwifictl connect x --hi", "--hidden "},
        {"kazwifictl list --na", "--names "},
    };
    for (const auto& [words, last] : cases) {
        zsh.send(words + "\t\x14");
        ASSERT_TRUE(zsh.waitFor(">\r\n")) << zsh.out();
        const std::string before = words.substr(0, words.find_last_of(' ', words.size() - 2) + 1);
        EXPECT_EQ(shownLast(zsh.out()), before + last) << words;
    }
}

}  // namespace
}  // namespace kaz::test
