#include "simulator/supplicant/settings_message.h"

#include <cstdint>
#include <cstring>

namespace kaz::sim {
namespace {

template <typename T>
Setting readNumber(sd_bus_message* message, char type) {
    T value{};
    checked(sd_bus_message_read_basic(message, type, &value), "read number");
    return std::int64_t{value};
}

Setting readSetting(sd_bus_message* message, const char* contents) {
    if (std::strcmp(contents, "s") == 0) {
        const char* text = nullptr;
        checked(sd_bus_message_read_basic(message, 's', &text), "read text");
        return std::string(text);
    }
    if (std::strcmp(contents, "i") == 0) {
        return readNumber<std::int32_t>(message, 'i');
    }
    if (std::strcmp(contents, "u") == 0) {
        return readNumber<std::uint32_t>(message, 'u');
    }
    if (std::strcmp(contents, "ay") == 0) {
        const void* bytes = nullptr;
        std::size_t size = 0;
        checked(sd_bus_message_read_array(message, 'y', &bytes, &size), "read bytes");
        return ByteSetting{std::string(static_cast<const char*>(bytes), size)};
    }
    checked(sd_bus_message_skip(message, contents), "skip");
    return UnusableSetting{};
}

}  // namespace

Settings readSettings(sd_bus_message* message) {
    Settings settings;
    checked(sd_bus_message_enter_container(message, 'a', "{sv}"), "enter dictionary");
    while (checked(sd_bus_message_enter_container(message, 'e', "sv"), "enter entry") > 0) {
        const char* key = nullptr;
        checked(sd_bus_message_read_basic(message, 's', &key), "read key");
        char type = 0;
        const char* contents = nullptr;
        checked(sd_bus_message_peek_type(message, &type, &contents), "peek");
        checked(sd_bus_message_enter_container(message, 'v', contents), "enter variant");
        settings.emplace_back(key, readSetting(message, contents));
        checked(sd_bus_message_exit_container(message), "exit variant");
        checked(sd_bus_message_exit_container(message), "exit entry");
    }
    checked(sd_bus_message_exit_container(message), "exit dictionary");
    return settings;
}

}  // namespace kaz::sim
