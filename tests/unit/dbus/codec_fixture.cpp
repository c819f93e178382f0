#include "unit/dbus/codec_fixture.h"

#include <kaz/dbus/dbus_error.h>

#include <stdexcept>
#include <string_view>

namespace kaz::dbus {
namespace {

// Where the text lies in the message, from its present position on.
const char* find(sd_bus_message* message, std::string_view wanted) {
    char type = 0;
    const char* contents = nullptr;
    while (sd_bus_message_peek_type(message, &type, &contents) > 0) {
        if (contents != nullptr) {
            sd_bus_message_enter_container(message, type, contents);
            if (const char* found = find(message, wanted); found != nullptr) {
                return found;
            }
            sd_bus_message_exit_container(message);
        } else if (type == SD_BUS_TYPE_STRING || type == SD_BUS_TYPE_OBJECT_PATH) {
            const char* text = nullptr;
            sd_bus_message_read_basic(message, type, static_cast<void*>(&text));
            if (text == wanted) {
                return text;
            }
        } else {
            sd_bus_message_skip(message, nullptr);
        }
    }
    return nullptr;
}

}  // namespace

std::string errorText(int code) {
    return DbusError(code).error();
}

void corruptText(sd_bus_message* message, const std::string& text) {
    const char* place = find(message, text);
    if (place == nullptr) {
        throw std::logic_error("the message does not hold " + text);
    }
    *const_cast<char*>(place) =
        '\xff';  // NOLINT(cppcoreguidelines-pro-type-const-cast): the damage is the aim
    sd_bus_message_rewind(message, 1);
}

}  // namespace kaz::dbus
