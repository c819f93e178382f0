#pragma once

#include <filesystem>

#include "inspection/facts.h"

namespace kaz::inspection {

// The radios and interfaces, and what networkd notes about them.
void readLinks(Facts& facts, const std::filesystem::path& root);

// The supplicants and other programs that manage wireless interfaces.
void readProcesses(Facts& facts, const std::filesystem::path& root);

// The file with the user's choice. `path` is below `root`.
ChoiceFile readChoice(const std::filesystem::path& root, const std::filesystem::path& path);

}  // namespace kaz::inspection
