#pragma once

#include <filesystem>

namespace kaz::sim {

// A new folder that goes with this object.
class TemporaryFolder {
  public:
    // Throws std::system_error.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    TemporaryFolder(TemporaryFolder&&) = delete;
    TemporaryFolder& operator=(TemporaryFolder&&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

}  // namespace kaz::sim
