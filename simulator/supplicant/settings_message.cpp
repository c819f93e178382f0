#include "simulator/supplicant/settings_message.h"

#include <cstdint>
#include <string_view>

namespace kaz::sim {
namespace {

Setting readSetting(sd_bus_message* message, const char* contents) {
    const std::string_view type = contents;
    if (type == "s") {
        return Wire<std::string>::read(message);
    }
    if (type == "i") {
        return std::int64_t{Wire<std::int32_t>::read(message)};
    }
    if (type == "u") {
        return std::int64_t{Wire<std::uint32_t>::read(message)};
    }
    if (type == "ay") {
        return ByteSetting{Wire<Bytes>::read(message)};
    }
    checked(sd_bus_message_skip(message, contents), "skip");
    return UnusableSetting{};
}

}  // namespace

Settings Wire<Settings>::read(sd_bus_message* message) {
    Settings settings;
    readEntries(message, [&](std::string_view key) {
        char type = 0;
        const char* contents = nullptr;
        checked(sd_bus_message_peek_type(message, &type, &contents), "peek");
        checked(sd_bus_message_enter_container(message, 'v', contents), "enter variant");
        settings.emplace_back(key, readSetting(message, contents));
        checked(sd_bus_message_exit_container(message), "exit variant");
    });
    return settings;
}

}  // namespace kaz::sim
