#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::ctl {

// A line split the way a shell does: at blanks, with quotes of both kinds and backslashes, but without any other
// meaning for any character.
struct SplitLine {
    std::vector<std::string>
        words;                   // the last is the one that more text would go on with, empty after a blank
    std::size_t lastBegins = 0;  // where the last stands in the line
    bool quoteIsOpen = false;
};

SplitLine split(std::string_view line);

// The words of a whole line. Nothing when a quote is not closed.
std::optional<std::vector<std::string>> wordsOfLine(std::string_view line);

}  // namespace kaz::ctl
