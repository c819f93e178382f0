// What libsystemd's interfaces need.
#pragma once

#include "base/sd_bus/handles.h"

namespace kaz::dbus {

// C interfaces say null where they have no text.
inline const char* textOf(const char* text) noexcept {
    return text == nullptr ? "" : text;
}

}  // namespace kaz::dbus
