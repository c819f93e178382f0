#pragma once

#include "dbus/variant.h"

#include <wifi/types.h>

namespace kaz::wifi {

// The supplicant's settings for a network, as AddNetwork takes them.
dbus::Variant::Map networkSettings(const ConnectionSettings& settings);

}  // namespace kaz::wifi
