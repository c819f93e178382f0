#pragma once

#include "base/log.h"

#include <exception>

namespace kaz::wifi {

// Calls what runs the program's code. An exception from it is logged.
template <typename Function>
void callGuarded(const Function& function) {
    try {
        function();
    } catch (const std::exception& error) {
        log::error("A callback threw an exception: {}", error.what());
    } catch (...) {
        log::error("A callback threw an exception of unknown type");
    }
}

}  // namespace kaz::wifi
