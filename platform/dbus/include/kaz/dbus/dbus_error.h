#pragma once

#include <string>

namespace kaz::dbus {

// The text of a negative sd-bus return code. The text is the C library's English description of the errno and
// never depends on the locale.
class [[gnu::visibility("default")]] DbusError {
  public:
    explicit DbusError(int code);
    ~DbusError();
    DbusError(const DbusError&) = default;
    DbusError& operator=(const DbusError&) = default;
    DbusError(DbusError &&) noexcept = default;
    DbusError& operator=(DbusError&&) noexcept = default;

    const std::string& error() const noexcept {
        return text_;
    }

  private:
    std::string text_;
};

}  // namespace kaz::dbus
