#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string_view>

#include "base/file_descriptor.h"

namespace kaz {

// The details of replacing a file.
struct FileReplacement {
    std::filesystem::path target;
    std::filesystem::path temporary;  // in the target's folder, and used by one writer at a time
    mode_t mode;                      // of the new file, less the umask

    // Runs after the text is written and before the rename. May be empty; may throw.
    std::function<void(const FileDescriptor&)> prepare;
};

// Replaces the target by a file with this text, atomically: a reader sees the whole old file or the whole new
// one. First removes the temporary file that a dead writer left; removes its own after a failure. Throws FileError.
void replaceFile(const FileReplacement& replacement, std::string_view text);

}  // namespace kaz
