#include "base/checked.h"

#include <cerrno>
#include <system_error>

namespace kaz {

int checked(int result, const char* call) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), call);
    }
    return result;
}

void throwErrno(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace kaz
