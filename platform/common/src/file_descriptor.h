#pragma once

#include <unistd.h>

#include <utility>

namespace kaz::util {

// An open file, closed at the end of scope.
class FileDescriptor {
  public:
    explicit FileDescriptor(int fd) noexcept : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (isOpen()) {
            ::close(fd_);
        }
    }

    bool isOpen() const noexcept { return fd_ >= 0; }
    int get() const noexcept { return fd_; }

  private:
    int fd_;
};

}  // namespace kaz::util
