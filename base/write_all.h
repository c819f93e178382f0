#pragma once

#include <string_view>

namespace kaz {

// Writes the whole text, through interruptions and partial writes. False, with errno set, when that fails.
bool writeAll(int fd, std::string_view text) noexcept;

}  // namespace kaz
