#pragma once

#include <string>

namespace kaz::dbus {

/// A D-Bus object path as a value. It accepts any text; an invalid path is detected when it is used.
class [[gnu::visibility("default")]] OPath {
  public:
    /// No text.
    OPath() = default;
    /// Takes any text, and converts implicitly.
    OPath(std::string path);  // NOLINT(google-explicit-constructor): callers write a path as a string
    /// The same; null gives an empty text.
    OPath(const char* path);  // NOLINT(google-explicit-constructor): callers write a path as a string

    /// True for an empty text and for "/", with which services say "no such object".
    bool emptyPath() const noexcept;

    /// The text.
    const std::string& str() const noexcept {
        return path_;
    }
    /// The text, terminated by NUL.
    const char* c_str() const noexcept {
        return path_.c_str();
    }

    friend bool operator==(const OPath&, const OPath&) = default;

  private:
    std::string path_;
};

}  // namespace kaz::dbus
