#pragma once

#include <string>

namespace kaz::dbus {

/// The text of a negative sd-bus return code: the C library's English description of the errno, in every
/// locale.
class [[gnu::visibility("default")]] DbusError {
  public:
    /// `code` as sd-bus returned it.
    explicit DbusError(int code);
    ~DbusError();
    DbusError(const DbusError&) = default;                 ///< A copy of the text.
    DbusError& operator=(const DbusError&) = default;      ///< A copy of the text.
    DbusError(DbusError &&) noexcept = default;            ///< Moves the text.
    DbusError& operator=(DbusError&&) noexcept = default;  ///< Moves the text.

    /// The text.
    const std::string& error() const noexcept {
        return text_;
    }

  private:
    std::string text_;
};

}  // namespace kaz::dbus
