#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/non_copyable.h"

namespace kaz {

// A new folder in $TMPDIR (default /tmp), removed with its content at the end of scope.
class TemporaryFolder : NonCopyable {
  public:
    // The folder's name is `prefix` with random characters appended. Throws std::system_error.
    explicit TemporaryFolder(const std::string& prefix = "kaz-");
    ~TemporaryFolder();

    const std::filesystem::path& path() const noexcept { return path_; }
    std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

}  // namespace kaz
