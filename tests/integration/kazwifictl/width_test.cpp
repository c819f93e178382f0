// Tests that no screen is wider than its terminal, and that no word is broken.
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "integration/kazwifictl/command_fixture.h"

namespace kaz::test {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::set<std::string> wordsOf(const std::string& text) {
    std::istringstream in(text);
    std::set<std::string> words;
    for (std::string word; in >> word;) {
        // Times differ.
        words.insert(word.find_first_of("0123456789") == std::string::npos ? word : "");
    }
    return words;
}

// Bars and names take fewer columns than bytes.
std::size_t columnsIn(const std::string& line) {
    std::size_t columns = 0;
    for (const char byte : line) {
        columns += (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U ? 1 : 0;
    }
    return columns;
}

class Width : public CommandFixture, public testing::WithParamInterface<unsigned short> {
  protected:
    Width() { environment["NO_COLOR"] = "1"; }

    std::string screen(const std::vector<std::string>& arguments, unsigned short columns) {
        const auto program = inTerminal(arguments, columns);
        program->wait();
        return screenOf(program->out());
    }

    void breaksBetweenWords(const std::vector<std::string>& arguments) {
        constexpr unsigned short wide = 500;
        const std::string text = fits(arguments);
        const std::set<std::string> whole = wordsOf(screen(arguments, wide));
        for (const std::string& word : wordsOf(text)) {
            EXPECT_TRUE(whole.contains(word)) << '"' << word << "\" is a part of a word in\n" << text;
        }
    }

    // Returns the text.
    std::string fits(const std::vector<std::string>& arguments) {
        std::string text = screen(arguments, GetParam());
        for (const std::string& line : linesOf(text)) {
            const bool toPaste = line.starts_with("    ") || line.starts_with("try: kazwifictl ");
            EXPECT_TRUE(toPaste || columnsIn(line) <= GetParam()) << line;
        }
        return text;
    }
};

TEST_P(Width, IsKeptBetweenWords) {
    save("Far away, with a name this long", "not in range");
    startAndScan();
    connectHome();
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"help"},
             {"help", "connect"},
             {"help", "list"},
             {"status"},
             {"connect", "Elsewhere but with a name so long"},
             {"connect", "Campus", "--identity", "ada", "--password-file", "/nonexistent"},
             {"connect", "Old Router in the cellar", "--password-file", "/nonexistent"},
             {"forget", "Elsewhere"},
             {"nonsense"}}) {
        breaksBetweenWords(arguments);
    }
    fits({"list", "--saved"});
    runs(0, {"disconnect"});
    breaksBetweenWords({"connect", "Far away, with a name this long", "--wait", "0.3"});
    runs(0, {"off"});
    breaksBetweenWords({"list"});
    breaksBetweenWords({"status"});
}

INSTANTIATE_TEST_SUITE_P(Columns, Width, testing::Values(40, 80, 200), testing::PrintToStringParamName());

}  // namespace
}  // namespace kaz::test
