// Reads and replaces whole files. Failures throw FileError.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/file_descriptor.h"

namespace kaz::util {

struct FileAccess {
    mode_t mode;
    uid_t owner;
    gid_t group;
};

struct StoredFile {
    std::string text;
    FileAccess access;
    FileDescriptor file;  // that it was read from
};

// Sets owner and group, or the group alone where this process may not give files away. False when it may do
// neither.
bool giveTo(const FileDescriptor& file, uid_t owner, gid_t group);

// The folder a path lies in; "." for a bare name.
std::filesystem::path folderOf(const std::filesystem::path& path);

// The path a symbolic link leads to, through any number of links, whether there is a file or not.
std::filesystem::path followLinks(std::filesystem::path path);

// Creates a folder and those above it, as far as they are missing.
void makeFolders(const std::filesystem::path& folder);

// Nothing when there is no such file. What is not a regular file, or larger than the limit, is an error.
std::optional<StoredFile> readFile(const std::filesystem::path& path, std::size_t limit);

// Replaces a file (base/file_replacement.h) and waits until the new one is on disk. Without former access the new file
// gets the usual mode. One writer at a time: the temporary file is the target's name with ".tmp" appended.
void replaceStoredFile(const std::filesystem::path& target, std::string_view text,
                       const std::optional<FileAccess>& access);

// Waits until a file that was read is on disk, and its place in the folder. The file is not opened again: by
// now the path may lead to another one, or to a pipe.
void flushFile(const StoredFile& file, const std::filesystem::path& path);

}  // namespace kaz::util
