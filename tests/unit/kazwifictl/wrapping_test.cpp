#include "kazwifictl/text/wrapping.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace kaz::ctl {
namespace {

TEST(Wrapping, BreaksBetweenWords) {
    EXPECT_EQ(wrapped("one two three", 8), "one two\nthree");
    EXPECT_EQ(wrapped("one two three", 3), "one\ntwo\nthree") << "a long word stays whole";
    EXPECT_EQ(wrapped("one two three", 0), "one two three");
    EXPECT_EQ(wrapped("\x1b[32mone\x1b[0m two", 7), "\x1b[32mone\x1b[0m two") << "colours take no room";
}

TEST(Wrapping, IndentsTheRestOfALine) {
    const std::vector<std::tuple<std::string, int, std::string>> cases{
        {"short\n", 20, "short\n"},
        {"plain text goes on\n", 12, "plain text\ngoes on\n"},
        {"  indented text goes on\n", 16, "  indented text\n    goes on\n"},
        {"Name      a long value\n", 20, "Name      a long\n          value\n"},
        {"  --option VALUE      what it does\n", 24, "  --option VALUE\n    what it does\n"},
        {"three short words            what it is\n", 24, "three short words\n    what it is\n"},
        {"    a command that is pasted\n", 10, "    a command that is pasted\n"},
        {"Trying \x1b[1m\"Home\"\x1b[0m, which is away\n", 19,
         "Trying \x1b[1m\"Home\"\x1b[0m,\nwhich is away\n"},
        {"without a break at the end", 12, "without a\nbreak at the\nend"},
        {"unlimited text", 0, "unlimited text"},
    };
    for (const auto& [text, columns, expected] : cases) {
        EXPECT_EQ(fitted(text, columns), expected) << text << " in " << columns;
    }
}

}  // namespace
}  // namespace kaz::ctl
