#pragma once

#include <filesystem>

#include "base/file_descriptor.h"
#include "base/non_copyable.h"

namespace kaz::util {

// The lock for replacing a file. One thread of one process holds it at a time. The lock is on a second file,
// because each replacement makes the protected file a different one. The kernel releases the lock when its
// process dies.
class ConfigLock : NonCopyable {
  public:
    // Blocks until the lock is free. Throws FileError on failure. The folder must exist.
    explicit ConfigLock(const std::filesystem::path& target);
    ~ConfigLock();

  private:
    FileDescriptor file_;
};

}  // namespace kaz::util
