#include "platform/dbus/guard.h"

#include <exception>

#include "platform/dbus/log.h"

namespace kaz::dbus {

void reportException(std::string_view where) noexcept {
    try {
        throw;
    } catch (const std::exception& exception) {
        log(spdlog::level::err, "Exception from {}: {}", where, exception.what());
    } catch (...) {
        log(spdlog::level::err, "Exception of an unknown type from {}", where);
    }
}

}  // namespace kaz::dbus
