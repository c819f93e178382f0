#include "support/message_text/message_text.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "base/sd_bus/basic_value.h"

namespace kaz::test {
namespace {

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += {'\\', c};
        } else if (c >= ' ' && c <= '~') {
            result += c;
        } else {
            std::array<char, 5> escaped{};
            std::snprintf(escaped.data(), escaped.size(), "\\x%02x", static_cast<unsigned char>(c));
            result += escaped.data();
        }
    }
    return result + '"';
}

std::string values(sd_bus_message* message, std::string_view separator);

std::string container(sd_bus_message* message, char type, const char* contents) {
    checked(sd_bus_message_enter_container(message, type, contents), "enter_container");
    std::string text;
    switch (type) {
        case SD_BUS_TYPE_VARIANT:
            text = '<' + values(message, ", ") + '>';
            break;
        case SD_BUS_TYPE_ARRAY:
            text = values(message, ", ");
            text = contents[0] == SD_BUS_TYPE_DICT_ENTRY_BEGIN ? '{' + text + '}' : '[' + text + ']';
            break;
        case SD_BUS_TYPE_DICT_ENTRY:
            text = values(message, ": ");
            break;
        default:
            text = '(' + values(message, ", ") + ')';
    }
    checked(sd_bus_message_exit_container(message), "exit_container");
    return text;
}

// The text of a basic value, with its type.
struct Basic {
    std::string operator()(const char* value) const {
        return (type == SD_BUS_TYPE_STRING ? "" : std::string{type}) + quoted(value);
    }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    template <typename Number>
    std::string operator()(Number value) const {
        return type + std::to_string(value);
    }

    char type;
};

std::string value(sd_bus_message* message, char type, const char* contents) {
    return dbus::visitBasic(message, type, Basic{type}, [&] { return container(message, type, contents); });
}

std::string values(sd_bus_message* message, std::string_view separator) {
    std::string text;
    char type = 0;
    const char* contents = nullptr;
    for (bool first = true; checked(sd_bus_message_peek_type(message, &type, &contents), "peek_type") > 0;
         first = false) {
        if (!first) {
            text += separator;
        }
        text += value(message, type, contents);
    }
    return text;
}

}  // namespace

std::string messageText(sd_bus_message* message) {
    checked(sd_bus_message_rewind(message, 1), "rewind");
    std::string text = values(message, ", ");
    checked(sd_bus_message_rewind(message, 1), "rewind");
    return text;
}

}  // namespace kaz::test
