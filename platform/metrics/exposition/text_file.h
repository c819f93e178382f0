#pragma once

#include <filesystem>
#include <string_view>

namespace kaz::metrics_reporting {

// Creates or replaces the file atomically. It may be lost after a power cut. Throws std::runtime_error, also
// when the path exists and is not a regular file.
void replaceTextFile(const std::filesystem::path& path, std::string_view text);

}  // namespace kaz::metrics_reporting
