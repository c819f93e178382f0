#pragma once

#include <string>
#include <utility>

namespace kaz::dbus {

// A D-Bus object path as a value.
class OPath {
  public:
    OPath() = default;
    OPath(std::string path) : path_(std::move(path)) {}  // NOLINT(google-explicit-constructor)
    OPath(const char* path) : path_(path) {}             // NOLINT(google-explicit-constructor)

    // True for "/" too: services write it for "no object".
    bool emptyPath() const { return path_.empty() || path_ == "/"; }
    const std::string& str() const { return path_; }

  private:
    std::string path_;
};

}  // namespace kaz::dbus
