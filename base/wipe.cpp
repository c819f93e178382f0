#include "base/wipe.h"

#include <string.h>

namespace kaz {

void wipe(std::string& secret) noexcept {
    // Growing to the capacity never reallocates, and makes the bytes behind the end ours to write.
    secret.resize(secret.capacity());
    ::explicit_bzero(secret.data(), secret.size());
    secret.clear();
}

}  // namespace kaz
