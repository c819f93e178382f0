#pragma once

#include <filesystem>

#include "platform/common/file_descriptor.h"

namespace kaz::util {

// The right to replace a file, held by one thread of one process at a time. It lies on a file beside the
// protected one, because that one is another file after each replacement. The kernel gives it back when its
// holder dies.
class ConfigLock {
  public:
    // Blocks until the lock is free. Throws FileError when it cannot be had. The folder must exist.
    explicit ConfigLock(const std::filesystem::path& target);
    ~ConfigLock();
    ConfigLock(const ConfigLock&) = delete;
    ConfigLock& operator=(const ConfigLock&) = delete;
    ConfigLock(ConfigLock&&) = delete;
    ConfigLock& operator=(ConfigLock&&) = delete;

  private:
    FileDescriptor file_;
};

}  // namespace kaz::util
