// Log records. Each goes to the process's default logger, which the host may replace at any time. After
// spdlog::shutdown() records are dropped. Callable from any thread. Nothing here throws, even when a sink throws, so
// destructors and C callbacks may log.
#pragma once

#include <fmt/format.h>

namespace kaz::log {

enum class Level { debug, info, warn, error };

void write(Level level, fmt::string_view format, fmt::format_args arguments) noexcept;

// Makes the logger write out what it buffers, before the process ends abnormally.
void flush() noexcept;

template <typename... Args>
void debug(fmt::format_string<Args...> format, Args&&... args) noexcept {
    write(Level::debug, format, fmt::make_format_args(args...));
}

template <typename... Args>
void info(fmt::format_string<Args...> format, Args&&... args) noexcept {
    write(Level::info, format, fmt::make_format_args(args...));
}

template <typename... Args>
void warn(fmt::format_string<Args...> format, Args&&... args) noexcept {
    write(Level::warn, format, fmt::make_format_args(args...));
}

template <typename... Args>
void error(fmt::format_string<Args...> format, Args&&... args) noexcept {
    write(Level::error, format, fmt::make_format_args(args...));
}

}  // namespace kaz::log
