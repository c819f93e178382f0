#include "inspection/text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "base/errno_text.h"
#include "base/file_descriptor.h"

namespace kaz::inspection {

namespace fs = std::filesystem;

Unknown obstacleOf(int error) {
    const bool denied = error == EACCES || error == EPERM;
    return {denied ? Obstacle::notAllowed : Obstacle::failed, errnoText(error)};
}

Fact<std::string> textOf(const fs::path& path) {
    constexpr std::size_t limit = std::size_t{1024} * 1024;
    constexpr std::size_t step = 16384;
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) {
        return failureOf<std::string>(errno);
    }
    std::string text;
    // At once, so that no copy of a secret stays in memory that was freed.
    text.reserve(std::min(static_cast<std::size_t>(status.st_size), limit) + 2 * step);
    for (;;) {
        const std::size_t size = text.size();
        text.resize(size + step);
        const ssize_t got = ::read(file.get(), text.data() + size, step);
        text.resize(size + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        if (got < 0) {
            return failureOf<std::string>(errno);
        }
        if (got == 0 || text.size() >= limit) {
            return text;
        }
    }
}

std::string textOr(const fs::path& path) {
    const Fact<std::string> text = textOf(path);
    return text.isKnown() ? *text : std::string();
}

std::string firstLineOf(const fs::path& path) {
    const std::string text = textOr(path);
    return text.substr(0, text.find('\n'));
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

std::string_view trimmed(std::string_view text) {
    constexpr const char* blanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::map<std::string, std::string> entriesOf(std::string_view text) {
    std::map<std::string, std::string> entries;
    std::string section;
    for (const std::string& each : split(text, '\n')) {
        const std::string_view line = trimmed(each);
        const std::size_t equals = line.find('=');
        if (line.starts_with('[') && line.ends_with(']')) {
            section = std::string(line.substr(1, line.size() - 2)) + '/';
        } else if (equals != std::string_view::npos && !line.starts_with('#') && !line.starts_with(';')) {
            entries.insert_or_assign(section + std::string(trimmed(line.substr(0, equals))),
                                     std::string(trimmed(line.substr(equals + 1))));
        }
    }
    return entries;
}

std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
        names.push_back(each->path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace kaz::inspection
