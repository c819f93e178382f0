#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kaz::sim {

// Lower-case, two digits a byte.
std::string toHex(std::string_view bytes);

// Empty when the text has an odd length or a character that is no hexadecimal digit.
std::optional<std::string> fromHex(std::string_view digits);

}  // namespace kaz::sim
