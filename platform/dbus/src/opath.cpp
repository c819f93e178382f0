#include <kaz/dbus/opath.h>

#include <utility>

namespace kaz::dbus {

OPath::OPath(std::string path) : path_(std::move(path)) {}

OPath::OPath(const char* path) : path_(path == nullptr ? "" : path) {}

bool OPath::emptyPath() const noexcept {
    return path_.empty() || path_ == "/";
}

}  // namespace kaz::dbus
