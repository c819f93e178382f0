#pragma once

#include <string_view>

namespace kaz {

// Writes the whole text, despite interruptions and partial writes. Returns false and sets errno on failure.
bool writeAll(int fd, std::string_view text) noexcept;

}  // namespace kaz
