#pragma once

#include "dbus/variant.h"

#include <wifi/types.h>

namespace kaz::wifi {

// Converts the settings into the argument of AddNetwork.
dbus::Variant::Map networkSettings(const ConnectionSettings& settings);

}  // namespace kaz::wifi
