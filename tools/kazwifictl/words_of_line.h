#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kaz::ctl {

// Splits a line the way a shell does: at blanks, with quotes of both kinds and backslashes, but without any
// other meaning for any character. Nothing when a quote is not closed.
std::optional<std::vector<std::string>> wordsOfLine(std::string_view line);

}  // namespace kaz::ctl
