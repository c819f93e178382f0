#pragma once

#include "base/non_copyable.h"

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace kaz::test {

// A temporary file with a text. The destructor deletes it.
class SecretFile : NonCopyable {
  public:
    explicit SecretFile(const std::string& text)
        : path_((std::filesystem::temp_directory_path() / "secret-XXXXXX").string()) {
        const int fd = ::mkstemp(path_.data());
        static_cast<void>(!::write(fd, text.data(), text.size()));
        ::close(fd);
    }
    ~SecretFile() { ::unlink(path_.c_str()); }

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace kaz::test
