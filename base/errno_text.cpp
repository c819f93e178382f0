#include "base/errno_text.h"

#include <cstdlib>
#include <cstring>

namespace kaz {

std::string errnoText(int error) {
    const long long number = std::llabs(error);  // the smallest int has no positive counterpart
    // The one description in the C library that is neither translated nor shared between threads.
    const char* text = ::strerrordesc_np(static_cast<int>(number));
    return text != nullptr ? text : "Unknown error " + std::to_string(number);
}

}  // namespace kaz
