// The library's log records. They go to what is the process's default logger at that moment; the host may replace it
// at any time, or have shut logging down, and then they are dropped. Any thread; nothing here throws.
#pragma once

#include <fmt/format.h>

namespace kaz::wifi::log {

enum class Level { debug, info, warn, error };

void write(Level level, fmt::string_view format, fmt::format_args arguments) noexcept;

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

}  // namespace kaz::wifi::log
