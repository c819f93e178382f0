#include "platform/metrics/exposition/text_file.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "base/file_error.h"
#include "base/file_replacement.h"

namespace kaz::metrics_reporting {
namespace {

namespace fs = std::filesystem;

constexpr mode_t newFile = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

// One per process, because several processes may write to one file. Hidden, and without the extension that
// collectors look for.
fs::path temporaryFor(const fs::path& path) {
    return fs::path(path).replace_filename(fmt::format(".{}.{}.tmp", path.filename().native(), ::getpid()));
}

}  // namespace

void replaceTextFile(const fs::path& path, std::string_view text) {
    std::error_code unknown;
    const auto inTheWay = fs::symlink_status(path, unknown).type();
    // Especially /dev/stdout and similar files, which a root process could replace.
    if (inTheWay != fs::file_type::regular && inTheWay != fs::file_type::not_found) {
        throw FileError("replace", path, unknown ? unknown.value() : EINVAL);
    }
    replaceFile({path, temporaryFor(path), newFile, nullptr}, text);
}

}  // namespace kaz::metrics_reporting
