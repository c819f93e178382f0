#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "inspection/fact.h"

namespace kaz::inspection {

// The text of a file, at most 1 MiB of it. Never waits, not even for a pipe. May contain secrets, then wipe() it.
Fact<std::string> textOf(const std::filesystem::path& path);

// textOf(), empty if there is none.
std::string textOr(const std::filesystem::path& path);

// textOr() without what follows the first line.
std::string firstLineOf(const std::filesystem::path& path);

// What a failure of the operating system says about a fact.
template <typename Value>
Fact<Value> failureOf(int error);
Unknown obstacleOf(int error);

// The parts of the text between the separators.
std::vector<std::string> split(std::string_view text, char separator);

// Without blanks at both ends.
std::string_view trimmed(std::string_view text);

// The lines KEY=VALUE of a text. With sections, "[Network]" is put before a key: "Network/DHCP". A later value of
// a key replaces a former one.
std::map<std::string, std::string> entriesOf(std::string_view text);

// The names in a folder, in order; empty if it cannot be read.
std::vector<std::string> namesIn(const std::filesystem::path& folder);

template <typename Value>
Fact<Value> failureOf(int error) {
    constexpr int noFile = 2;     // ENOENT
    constexpr int noFolder = 20;  // ENOTDIR
    return error == noFile || error == noFolder ? Fact<Value>::absent() : Fact<Value>(obstacleOf(error));
}

}  // namespace kaz::inspection
