#include "platform/common/config_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "base/file_error.h"
#include "platform/common/stored_file.h"

namespace kaz::util {
namespace {

// Only those who may replace files in the folder may lock. Others may not even read the lock file, because a
// reader could hold the lock for ever.
void openToWritersOf(const std::filesystem::path& folder, const FileDescriptor& file) {
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0 || !giveTo(file, status.st_uid, status.st_gid)) {
        return;
    }
    if ((status.st_mode & S_IWGRP) != 0) {
        ::fchmod(file.get(), S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP);
    }
}

FileDescriptor openLockFile(const std::filesystem::path& path) {
    constexpr int flags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    for (;;) {
        if (FileDescriptor existing(::open(path.c_str(), flags)); existing.isOpen()) {
            return existing;
        }
        if (errno != ENOENT) {
            throw FileError("open", path, errno);
        }
        FileDescriptor created(::open(path.c_str(), flags | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR));
        if (created.isOpen()) {
            openToWritersOf(folderOf(path), created);
            return created;
        }
        if (errno != EEXIST) {
            throw FileError("create", path, errno);
        }
    }
}

void waitForLock(int fd, const std::filesystem::path& path) {
    while (::flock(fd, LOCK_EX) != 0) {
        if (errno != EINTR) {
            throw FileError("lock", path, errno);
        }
    }
}

bool isStillAt(const std::filesystem::path& path, int fd) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(fd, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

FileDescriptor acquire(const std::filesystem::path& path) {
    for (;;) {
        FileDescriptor file = openLockFile(path);
        waitForLock(file.get(), path);
        // The file may have been removed meanwhile; then the next writer locks another file.
        if (isStillAt(path, file.get())) {
            return file;
        }
    }
}

}  // namespace

ConfigLock::ConfigLock(const std::filesystem::path& target)
    : file_(acquire(std::filesystem::path(target) += ".lock")) {}

ConfigLock::~ConfigLock() {
    // After a close only, a child that another thread forked meanwhile would still hold the lock.
    ::flock(file_.get(), LOCK_UN);
}

}  // namespace kaz::util
