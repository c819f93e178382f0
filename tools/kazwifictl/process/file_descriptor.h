#pragma once

#include <unistd.h>

#include <utility>

namespace kaz::ctl {

// Owns a descriptor; negative: none.
class FileDescriptor {
  public:
    explicit FileDescriptor(int fd = -1) noexcept : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        FileDescriptor former(std::exchange(fd_, std::exchange(other.fd_, -1)));
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const noexcept { return fd_; }

  private:
    int fd_;
};

}  // namespace kaz::ctl
