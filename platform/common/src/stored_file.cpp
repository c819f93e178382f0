#include "platform/common/stored_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "base/file_error.h"
#include "base/file_replacement.h"

namespace kaz::util {
namespace {

constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
constexpr mode_t newFile = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
constexpr mode_t newFolder = S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH;
constexpr mode_t allModeBits = S_ISUID | S_ISGID | S_ISVTX | S_IRWXU | S_IRWXG | S_IRWXO;

void flush(const FileDescriptor& file, const std::filesystem::path& path) {
    // EINVAL: this file system does not support it.
    if (::fsync(file.get()) != 0 && errno != EINVAL) {
        throw FileError("flush", path, errno);
    }
}

void flushFolder(const std::filesystem::path& folder) {
    const FileDescriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!file.isOpen()) {
        throw FileError("open", folder, errno);
    }
    flush(file, folder);
}

std::string readAll(const FileDescriptor& file, const std::filesystem::path& path, std::size_t limit) {
    std::string text;
    std::array<char, 4096> piece{};
    for (;;) {
        const ssize_t length = ::read(file.get(), piece.data(), piece.size());
        if (length == 0) {
            return text;
        }
        if (length > 0) {
            text.append(piece.data(), static_cast<std::size_t>(length));
        } else if (errno != EINTR) {
            throw FileError("read", path, errno);
        }
        if (text.size() > limit) {
            throw FileError("read", path, EFBIG);
        }
    }
}

void restoreAccess(const FileDescriptor& file, const std::filesystem::path& path, const FileAccess& access) {
    giveTo(file, access.owner, access.group);  // may fail: a changed owner is better than a lost update
    if (::fchmod(file.get(), access.mode) != 0) {
        throw FileError("set the mode of", path, errno);
    }
}

}  // namespace

bool giveTo(const FileDescriptor& file, uid_t owner, gid_t group) {
    constexpr auto asItIs = static_cast<uid_t>(-1);
    return ::fchown(file.get(), owner, group) == 0 || ::fchown(file.get(), asItIs, group) == 0;
}

std::filesystem::path folderOf(const std::filesystem::path& path) {
    return path.has_parent_path() ? path.parent_path() : ".";
}

std::filesystem::path followLinks(std::filesystem::path path) {
    const std::filesystem::path start = path;
    constexpr int asManyAsTheKernelFollows = 40;
    for (int followed = 0; followed <= asManyAsTheKernelFollows; ++followed) {
        std::error_code noLink;
        const auto destination = std::filesystem::read_symlink(path, noLink);
        if (noLink) {
            return path;
        }
        path.replace_filename(destination);
    }
    throw FileError("follow", start, ELOOP);
}

void makeFolders(const std::filesystem::path& folder) {
    struct stat status {};
    if (::stat(folder.c_str(), &status) == 0) {
        return;
    }
    if (errno != ENOENT) {
        throw FileError("look for", folder, errno);
    }
    const auto parent = folderOf(folder);
    makeFolders(parent);
    // Another process may be creating it too.
    if (::mkdir(folder.c_str(), newFolder) != 0 && errno != EEXIST) {
        throw FileError("create", folder, errno);
    }
    flushFolder(parent);
}

std::optional<StoredFile> readFile(const std::filesystem::path& path, std::size_t limit) {
    // Nonblocking, because opening a pipe would wait for its other end.
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen()) {
        if (errno == ENOENT) {
            return std::nullopt;
        }
        throw FileError("open", path, errno);
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        throw FileError("look at", path, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        throw FileError("read", path, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    std::string text = readAll(file, path, limit);
    return StoredFile{
        std::move(text), {status.st_mode & allModeBits, status.st_uid, status.st_gid}, std::move(file)};
}

void replaceStoredFile(const std::filesystem::path& target, std::string_view text,
                       const std::optional<FileAccess>& access) {
    const auto temporary = std::filesystem::path(target) += ".tmp";
    // First, because a failure after the replacement would be reported as a failed update.
    const auto folder = folderOf(target);
    const auto prepare = [&](const FileDescriptor& file) {
        if (access) {
            restoreAccess(file, temporary, *access);
        }
        flush(file, temporary);
    };
    replaceFile({target, temporary, access ? ownerOnly : newFile, prepare}, text);
    flushFolder(folder);
}

void flushFile(const StoredFile& file, const std::filesystem::path& path) {
    flush(file.file, path);
    flushFolder(folderOf(path));
}

}  // namespace kaz::util
