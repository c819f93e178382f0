#include "base/write_all.h"

#include <unistd.h>

#include <cerrno>

namespace kaz {

bool writeAll(int fd, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t length = ::write(fd, text.data(), text.size());
        if (length >= 0) {
            text.remove_prefix(static_cast<std::size_t>(length));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace kaz
