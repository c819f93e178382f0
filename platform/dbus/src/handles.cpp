#include "platform/dbus/handles.h"

#include <system_error>

namespace kaz::dbus {

int checked(int result, const char* call) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), call);
    }
    return result;
}

}  // namespace kaz::dbus
