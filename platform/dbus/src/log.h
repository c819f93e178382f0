// Logging that cannot fail: also in a destructor, on the edge of a C callback, or when a sink throws.
#pragma once

#include <spdlog/spdlog.h>

#include <utility>

namespace kaz::dbus {

// The record goes to what is the process's default logger at this moment. The caller may replace that at any
// time, or have shut logging down.
template <typename... Args>
void log(spdlog::level::level_enum level, spdlog::format_string_t<Args...> format, Args&&... args) noexcept {
    try {
        if (const auto logger = spdlog::default_logger()) {
            logger->log(level, format, std::forward<Args>(args)...);
        }
    } catch (...) {
        // There is nobody left to tell.
    }
}

}  // namespace kaz::dbus
