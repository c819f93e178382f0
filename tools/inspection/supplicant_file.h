#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "inspection/facts.h"

namespace kaz::inspection {

// Reads the supplicant's configuration. `path` is where the supplicant sees the file, below `root`.
Fact<SupplicantFile> readSupplicantFile(const std::filesystem::path& root, const std::filesystem::path& path);

// The structure of a configuration. The keys in it are not kept.
SupplicantFile::Settings settingsIn(std::string_view text);

// A value as the supplicant writes it: "text" in quotes, or hexadecimal digits. Empty if it is neither.
std::optional<std::string> textInFile(std::string_view value);

// Notes what a network's key_mgmt says.
void describeKeys(Network& network, std::string_view keyManagement);

}  // namespace kaz::inspection
