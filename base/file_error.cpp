#include "base/file_error.h"

#include <fmt/format.h>

#include "base/errno_text.h"

namespace kaz {

FileError::FileError(std::string_view step, const std::filesystem::path& path, int error)
    : std::runtime_error(fmt::format("{} {}: {}", step, path.native(), errnoText(error))) {}

}  // namespace kaz
