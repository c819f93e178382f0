#include "simulator/bus/message_json.h"

#include "base/sd_bus/basic_value.h"

#include <nlohmann/json.hpp>

namespace kaz::sim {
namespace {

using nlohmann::json;

json readNext(sd_bus_message* m);

bool atEnd(sd_bus_message* m) {
    return checked(sd_bus_message_at_end(m, 0), "at end") > 0;
}

json readArray(sd_bus_message* m, const char* contents) {
    const bool dictionary = contents[0] == '{';
    json values = dictionary ? json::object() : json::array();
    checked(sd_bus_message_enter_container(m, 'a', contents), "enter array");
    while (!atEnd(m)) {
        if (!dictionary) {
            values.push_back(readNext(m));
            continue;
        }
        char type = 0;
        const char* entry = nullptr;
        checked(sd_bus_message_peek_type(m, &type, &entry), "peek");
        checked(sd_bus_message_enter_container(m, 'e', entry), "enter entry");
        const json key = readNext(m);
        values[key.is_string() ? key.get<std::string>() : key.dump()] = readNext(m);
        checked(sd_bus_message_exit_container(m), "exit entry");
    }
    checked(sd_bus_message_exit_container(m), "exit array");
    return values;
}

json readInside(sd_bus_message* m, char type, const char* contents) {
    json values = json::array();
    checked(sd_bus_message_enter_container(m, type, contents), "enter");
    while (!atEnd(m)) {
        values.push_back(readNext(m));
    }
    checked(sd_bus_message_exit_container(m), "exit");
    return type == 'v' ? values.front() : values;
}

json readOther(sd_bus_message* m, char type, const char* contents) {
    switch (type) {
        case 'a':
            return readArray(m, contents);
        case 'v':
        case 'r':
            return readInside(m, type, contents);
        default:
            checked(sd_bus_message_skip(m, nullptr), "skip");
            return nullptr;
    }
}

json readNext(sd_bus_message* m) {
    char type = 0;
    const char* contents = nullptr;
    checked(sd_bus_message_peek_type(m, &type, &contents), "peek");
    return dbus::visitBasic(
        m, type, [](auto value) { return json(value); }, [&] { return readOther(m, type, contents); });
}

}  // namespace

std::string argumentsAsJson(sd_bus_message* message) {
    json arguments = json::array();
    checked(sd_bus_message_rewind(message, 1), "rewind");
    while (checked(sd_bus_message_at_end(message, 1), "at end") == 0) {
        arguments.push_back(readNext(message));
    }
    checked(sd_bus_message_rewind(message, 1), "rewind");
    return arguments.dump();
}

}  // namespace kaz::sim
