#include "support/scripted_peer/require_success.h"

#include <stdexcept>
#include <string>

namespace kaz::test {

void requireSuccess(int result, const char* what) {
    if (result < 0) {
        throw std::runtime_error(std::string(what) + ": " + std::to_string(result));
    }
}

}  // namespace kaz::test
