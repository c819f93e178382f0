#pragma once

#include <filesystem>
#include <string_view>

namespace kaz::metrics_reporting {

// Puts a file with this text in the place of the one that may be there, so that a reader sees either whole.
// Not for what has to survive a power cut. Throws std::runtime_error, also when something other than a
// regular file is in the way.
void replaceTextFile(const std::filesystem::path& path, std::string_view text);

}  // namespace kaz::metrics_reporting
