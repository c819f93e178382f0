#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::ctl {

// A line, split at blanks as a shell splits it. Only blanks, single quotes, double quotes and backslashes are special.
struct SplitLine {
    std::vector<std::string> words;  // from split(), the last is the word being typed: empty after a blank
    std::size_t lastBegins = 0;      // the offset of the last word in the line
    bool quoteIsOpen = false;
};

SplitLine split(std::string_view line);

// The words of a whole line. Nothing when a quote is not closed.
std::optional<std::vector<std::string>> wordsOfLine(std::string_view line);

}  // namespace kaz::ctl
