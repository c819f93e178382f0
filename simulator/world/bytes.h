#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kaz::sim {

// Lower case, two digits per byte.
std::string toHex(std::string_view bytes);

// Empty if the text has an odd length or a character that is not a hexadecimal digit.
std::optional<std::string> fromHex(std::string_view digits);

}  // namespace kaz::sim
