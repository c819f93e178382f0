#pragma once

#include <string>
#include <system_error>

namespace kaz::dbus {

// The text of a negative sd-bus return code.
class DbusError {
  public:
    explicit DbusError(int code) : text_(std::generic_category().message(-code)) {}
    const std::string& error() const { return text_; }

  private:
    std::string text_;
};

}  // namespace kaz::dbus
