#include "base/guard.h"

#include <exception>

#include "base/log.h"

namespace kaz {

void reportException(std::string_view where) noexcept {
    try {
        throw;
    } catch (const std::exception& exception) {
        log::error("Exception from {}: {}", where, exception.what());
    } catch (...) {
        log::error("Exception of an unknown type from {}", where);
    }
}

}  // namespace kaz
