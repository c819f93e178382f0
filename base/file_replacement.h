#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string_view>

#include "base/file_descriptor.h"

namespace kaz {

// How a file is replaced.
struct FileReplacement {
    std::filesystem::path target;
    std::filesystem::path temporary;  // in the target's folder, and used by one writer at a time
    mode_t mode;                      // of the new file, less the umask

    // Runs when the new file is written, before it takes the target's place. May be empty; may throw.
    std::function<void(const FileDescriptor&)> prepare;
};

// Puts a file with this text in the place of the target, so that a reader sees the old file or the new one, whole.
// A temporary file that a dead writer left is removed, and so is ours when something fails. Throws FileError.
void replaceFile(const FileReplacement& replacement, std::string_view text);

}  // namespace kaz
