// The syntax of the configuration file. Pure functions on its bytes.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kaz::util {

std::map<std::string, std::string> parseConfig(std::string_view text);

// Why the two cannot be written as a line that reads back as the same two; null when they can.
const char* refusal(std::string_view key, std::string_view value);

// The text with exactly one line for the key, where its last one was or else at the end. A line keeps its
// kind of line end.
std::string withEntry(std::string_view text, std::string_view key, std::string_view value);

}  // namespace kaz::util
