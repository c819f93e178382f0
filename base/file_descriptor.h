#pragma once

#include <unistd.h>

#include <utility>

namespace kaz {

// Owns a file descriptor or none. Closes it at the end of scope, or when another one is assigned.
class FileDescriptor {
  public:
    explicit FileDescriptor(int fd = -1) noexcept : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        const FileDescriptor former(std::exchange(fd_, std::exchange(other.fd_, -1)));
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

}  // namespace kaz
