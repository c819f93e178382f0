#pragma once

#include <string>

namespace kaz::dbus {

/// A D-Bus object path as a value. Holds any text; whether it is a valid path shows when it is used.
class [[gnu::visibility("default")]] OPath {
  public:
    /// No text.
    OPath() = default;
    /// Takes any text, also where a path is asked for and a text is given.
    OPath(std::string path);  // NOLINT(google-explicit-constructor): a path is written as a text
    /// The same; null counts as no text.
    OPath(const char* path);  // NOLINT(google-explicit-constructor): so is this one

    /// True for no text and for "/", by which services say "no such object".
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
