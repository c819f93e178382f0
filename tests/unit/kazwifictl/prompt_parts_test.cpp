#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/temporary_folder.h"
#include "kazwifictl/prompt/completion.h"
#include "kazwifictl/prompt/line_history.h"
#include "kazwifictl/prompt/words_of_line.h"
#include "support/files/files.h"
#include "unit/kazwifictl/fake_world.h"

namespace kaz::ctl {
namespace {

using Words = std::vector<std::string>;
using test::connectedTo;
using test::network;
using wifi::SecurityMode;

TEST(WordsOfLine, SplitAtBlanksOutsideOfQuotes) {
    const std::vector<std::pair<std::string, Words>> cases{
        {"", {}},
        {"   ", {}},
        {"list", {"list"}},
        {"  connect   Home ", {"connect", "Home"}},
        {"connect 'My Home'", {"connect", "My Home"}},
        {"connect \"My Home\"", {"connect", "My Home"}},
        {"connect My\\ Home", {"connect", "My Home"}},
        {"connect 'it'\\''s'", {"connect", "it's"}},
        {"connect \"a\\\"b\"", {"connect", "a\"b"}},
        {"connect 'a\\b'", {"connect", "a\\b"}},
        {"connect ''", {"connect", ""}},
        {"a$b `c` *", {"a$b", "`c`", "*"}},
        {"end\\", {"end\\"}},
    };
    for (const auto& [line, words] : cases) {
        EXPECT_EQ(wordsOfLine(line), words) << line;
    }
    EXPECT_EQ(wordsOfLine("connect 'open"), std::nullopt);
    EXPECT_EQ(wordsOfLine("connect \"open"), std::nullopt);
}

TEST(Completion, OffersWhatMayComeNext) {
    Snapshot view;
    view.networks = {
        network("Cafe", -60, SecurityMode::none), network("Cafe Two", -61, SecurityMode::none, true),
        network("\x1b[31m", -40, SecurityMode::none), network("Home", -70, SecurityMode::rsnPsk)};
    view.connection.info = connectedTo("Campus", -50);
    const std::vector<std::tuple<Words, std::string, Words>> cases{
        {{}, "sc", {"scan"}},
        {{}, "o", {"on", "off"}},
        {{}, "q", {"quit"}},
        {{"connect"}, "Ca", {"Campus", "Cafe", "Cafe Two"}},
        {{"connect"}, "", {"Campus", "Cafe", "Cafe Two", "Home"}},
        {{"forget"}, "C", {"Campus", "Cafe Two"}},
        {{"connect", "Home"}, "--hi", {"--hidden"}},
        {{"connect", "Home", "--security"}, "wpa", {"wpa", "wpa2", "wpa3"}},
        {{"list"}, "--", {"--names", "--saved", "--help"}},
        {{"list"}, "x", {}},
    };
    for (const auto& [before, start, expected] : cases) {
        EXPECT_EQ(completions(before, start, view), expected)
            << (before.empty() ? "" : before.back()) << " " << start;
    }
}

TEST(LineHistory, IsSavedInAFileThatOnlyTheUserMayRead) {
    const TemporaryFolder folder;
    ::setenv("XDG_STATE_HOME", folder.path().c_str(), 1);
    const mode_t former = ::umask(0);
    LineHistory().add("connect Home");
    LineHistory().add("status");
    ::umask(former);
    ::unsetenv("XDG_STATE_HOME");
    const auto file = folder / "kazwifictl/history";
    EXPECT_EQ(test::readFile(file), "connect Home\nstatus\n");
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

}  // namespace
}  // namespace kaz::ctl
