// The syntax of the configuration file. Pure functions on its bytes.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace kaz::util {

std::map<std::string, std::string> parseConfig(std::string_view text);

// Returns why key and value cannot be written as a line that reads back the same; null when they can.
const char* refusal(std::string_view key, std::string_view value);

// Returns the text with exactly one line for the key. It replaces the key's last line, or is appended if there is
// none. A line keeps its line ending.
std::string withEntry(std::string_view text, std::string_view key, std::string_view value);

}  // namespace kaz::util
