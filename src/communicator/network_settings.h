#pragma once

#include "dbus/variant.h"

#include <wifi/certificates.h>
#include <wifi/types.h>

namespace kaz::wifi {

// Converts the settings into the argument of AddNetwork. Empty certificates add nothing to it.
dbus::Variant::Map networkSettings(const ConnectionSettings& settings, const Certificates& certificates);

}  // namespace kaz::wifi
