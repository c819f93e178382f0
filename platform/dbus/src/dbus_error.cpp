#include <kaz/dbus/dbus_error.h>

#include "base/errno_text.h"

namespace kaz::dbus {
DbusError::DbusError(int code) : text_(errnoText(code)) {}

DbusError::~DbusError() = default;

}  // namespace kaz::dbus
