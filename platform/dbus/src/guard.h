// The edge between the loop and what it runs.
#pragma once

#include <string_view>
#include <utility>

namespace kaz::dbus {

// Logs the exception being handled at error level.
void reportException(std::string_view where) noexcept;

// Runs the function; an exception of whatever type ends here, with a record in the log.
template <typename Function>
void runGuarded(std::string_view where, Function&& function) noexcept {
    try {
        std::forward<Function>(function)();
    } catch (...) {
        reportException(where);
    }
}

}  // namespace kaz::dbus
