#include "platform/metrics/exposition/text_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace kaz::metrics_reporting {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(std::string_view step, const fs::path& path, int error) {
    const char* reason = ::strerrordesc_np(error);  // never translated
    throw std::runtime_error(
        fmt::format("{} {}: {}", step, path.native(), reason != nullptr ? reason : "unknown error"));
}

class NewFile {
  public:
    explicit NewFile(const fs::path& path)
        : path_(path),
          fd_(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                     S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH)) {
        if (fd_ < 0) {
            fail("create", path_, errno);
        }
    }
    ~NewFile() { ::close(fd_); }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    NewFile(NewFile&&) = delete;
    NewFile& operator=(NewFile&&) = delete;

    void write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t length = ::write(fd_, text.data(), text.size());
            if (length >= 0) {
                text.remove_prefix(static_cast<std::size_t>(length));
            } else if (errno != EINTR) {
                fail("write", path_, errno);
            }
        }
    }

  private:
    const fs::path& path_;
    int fd_;
};

// Its own for each process, since several may be told to write to one file. Hidden, and without the ending
// that collectors look for.
fs::path temporaryFor(const fs::path& path) {
    return fs::path(path).replace_filename(fmt::format(".{}.{}.tmp", path.filename().native(), ::getpid()));
}

}  // namespace

void replaceTextFile(const fs::path& path, std::string_view text) {
    std::error_code unknown;
    const auto inTheWay = fs::symlink_status(path, unknown).type();
    // Above all /dev/stdout and its like, which a root process could replace.
    if (inTheWay != fs::file_type::regular && inTheWay != fs::file_type::not_found) {
        fail("replace", path, unknown ? unknown.value() : EINVAL);
    }
    const fs::path temporary = temporaryFor(path);
    ::unlink(temporary.c_str());
    try {
        NewFile(temporary).write(text);
        if (::rename(temporary.c_str(), path.c_str()) != 0) {
            fail("replace", path, errno);
        }
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
}

}  // namespace kaz::metrics_reporting
