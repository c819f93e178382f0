#include "support/message_text/message_text.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace kaz::test {
namespace {

int checked(int result) {
    if (result < 0) {
        throw std::runtime_error("cannot read the message: " + std::to_string(result));
    }
    return result;
}

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

template <typename T>
T basic(sd_bus_message* message, char type) {
    T value{};
    checked(sd_bus_message_read_basic(message, type, &value));
    return value;
}

template <typename T>
std::string number(sd_bus_message* message, char type) {
    return type + std::to_string(basic<T>(message, type));
}

std::string values(sd_bus_message* message, std::string_view separator);

std::string container(sd_bus_message* message, char type, const char* contents) {
    checked(sd_bus_message_enter_container(message, type, contents));
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
    checked(sd_bus_message_exit_container(message));
    return text;
}

std::string value(sd_bus_message* message, char type, const char* contents) {
    switch (type) {
        case SD_BUS_TYPE_STRING:
            return quoted(basic<const char*>(message, type));
        case SD_BUS_TYPE_OBJECT_PATH:
        case SD_BUS_TYPE_SIGNATURE:
            return type + quoted(basic<const char*>(message, type));
        case SD_BUS_TYPE_BOOLEAN:
            return basic<int>(message, type) != 0 ? "true" : "false";
        case SD_BUS_TYPE_BYTE:
            return number<std::uint8_t>(message, type);
        case SD_BUS_TYPE_INT16:
            return number<std::int16_t>(message, type);
        case SD_BUS_TYPE_UINT16:
            return number<std::uint16_t>(message, type);
        case SD_BUS_TYPE_INT32:
            return number<std::int32_t>(message, type);
        case SD_BUS_TYPE_UINT32:
            return number<std::uint32_t>(message, type);
        case SD_BUS_TYPE_INT64:
            return number<std::int64_t>(message, type);
        case SD_BUS_TYPE_UINT64:
            return number<std::uint64_t>(message, type);
        case SD_BUS_TYPE_DOUBLE:
            return number<double>(message, type);
        default:
            return container(message, type, contents);
    }
}

std::string values(sd_bus_message* message, std::string_view separator) {
    std::string text;
    char type = 0;
    const char* contents = nullptr;
    for (bool first = true; checked(sd_bus_message_peek_type(message, &type, &contents)) > 0; first = false) {
        if (!first) {
            text += separator;
        }
        text += value(message, type, contents);
    }
    return text;
}

}  // namespace

std::string messageText(sd_bus_message* message) {
    checked(sd_bus_message_rewind(message, 1));
    std::string text = values(message, ", ");
    checked(sd_bus_message_rewind(message, 1));
    return text;
}

}  // namespace kaz::test
