#pragma once

#include <filesystem>
#include <string_view>

namespace kaz::metrics_reporting {

// Replaces a file (base/file_replacement.h) without waiting for the disk: a power cut may leave it empty. Throws
// FileError, also when something other than a regular file has this name.
void replaceTextFile(const std::filesystem::path& path, std::string_view text);

}  // namespace kaz::metrics_reporting
