#pragma once

#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace kaz {

// A failed step on a file. The text reads "open /a/b: Permission denied" and does not depend on the locale.
class FileError : public std::runtime_error {
  public:
    FileError(std::string_view step, const std::filesystem::path& path, int error);
};

}  // namespace kaz
