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
    FileDescriptor file;  // from which it was read
};

// Sets owner and group, or only the group if this process may not change the owner. Returns false if it may
// change neither.
bool giveTo(const FileDescriptor& file, uid_t owner, gid_t group);

// The folder of a path; "." for a bare name.
std::filesystem::path folderOf(const std::filesystem::path& path);

// The path to which a symbolic link leads, through any number of links. The file may be missing.
std::filesystem::path followLinks(std::filesystem::path path);

// Creates a folder and its missing parents.
void makeFolders(const std::filesystem::path& folder);

// Empty if there is no file. Something other than a regular file, or a file larger than the limit, is an
// error.
std::optional<StoredFile> readFile(const std::filesystem::path& path, std::size_t limit);

// Replaces a file (base/file_replacement.h) and waits until the new one is on disk. Without `access` the
// new file gets mode 0644, less the umask. One writer at a time: the temporary file is the target's name with
// ".tmp" appended.
void replaceStoredFile(const std::filesystem::path& target, std::string_view text,
                       const std::optional<FileAccess>& access);

// Waits until a file that was read and its folder entry are on disk. Does not open the file again, because
// the path may lead to another file or a pipe by now.
void flushFile(const StoredFile& file, const std::filesystem::path& path);

}  // namespace kaz::util
