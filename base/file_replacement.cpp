#include "base/file_replacement.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "base/file_error.h"
#include "base/write_all.h"

namespace kaz {
namespace {

void removeIfThere(const std::filesystem::path& path) {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        throw FileError("remove", path, errno);
    }
}

void writeNewFile(const FileReplacement& replacement, std::string_view text) {
    const auto& path = replacement.temporary;
    const FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, replacement.mode));
    if (!file.isOpen()) {
        throw FileError("open", path, errno);
    }
    if (!writeAll(file.get(), text)) {
        throw FileError("write", path, errno);
    }
    if (replacement.prepare) {
        replacement.prepare(file);
    }
}

}  // namespace

void replaceFile(const FileReplacement& replacement, std::string_view text) {
    removeIfThere(replacement.temporary);
    try {
        writeNewFile(replacement, text);
        if (::rename(replacement.temporary.c_str(), replacement.target.c_str()) != 0) {
            throw FileError("replace", replacement.target, errno);
        }
    } catch (...) {
        ::unlink(replacement.temporary.c_str());
        throw;
    }
}

}  // namespace kaz
