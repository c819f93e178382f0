// Catches exceptions of the functions that a loop or a C library runs.
#pragma once

#include <string_view>
#include <utility>

namespace kaz {

// Logs the current exception at error level.
void reportException(std::string_view where) noexcept;

// Runs the function. Catches and logs an exception of any type.
template <typename Function>
void runGuarded(std::string_view where, Function&& function) noexcept {
    try {
        std::forward<Function>(function)();
    } catch (...) {
        reportException(where);
    }
}

}  // namespace kaz
