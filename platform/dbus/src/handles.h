// Helpers for libsystemd's interfaces.
#pragma once

#include "base/sd_bus/handles.h"

namespace kaz::dbus {

// The C text, or an empty one for null.
inline const char* textOf(const char* text) noexcept {
    return text == nullptr ? "" : text;
}

}  // namespace kaz::dbus
