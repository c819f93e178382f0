// Bytes as hexadecimal digits.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kaz {

// Lower case, two digits per byte.
std::string toHex(std::string_view bytes);

// Reads digits of either case. Empty if their number is odd or a character is not a hexadecimal digit.
std::optional<std::string> fromHex(std::string_view digits);

}  // namespace kaz
