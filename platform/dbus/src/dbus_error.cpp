#include <kaz/dbus/dbus_error.h>

#include <cstdlib>
#include <cstring>

namespace kaz::dbus {
namespace {

std::string describe(int code) {
    const long long number = std::llabs(code);  // the smallest int has no positive counterpart
    // The one description in the C library that is neither translated nor shared between threads.
    const char* text = ::strerrordesc_np(static_cast<int>(number));
    return text != nullptr ? text : "Unknown error " + std::to_string(number);
}

}  // namespace

DbusError::DbusError(int code) : text_(describe(code)) {}

DbusError::~DbusError() = default;

}  // namespace kaz::dbus
