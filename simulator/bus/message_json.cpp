#include "simulator/bus/message_json.h"

#include <nlohmann/json.hpp>

#include <cstdint>

namespace kaz::sim {
namespace {

using nlohmann::json;

json readValue(sd_bus_message* m, char type, const char* contents);

bool atEnd(sd_bus_message* m) {
    return check(sd_bus_message_at_end(m, 0), "at end") > 0;
}

json readNext(sd_bus_message* m) {
    char type = 0;
    const char* contents = nullptr;
    check(sd_bus_message_peek_type(m, &type, &contents), "peek");
    return readValue(m, type, contents);
}

template <typename T>
json readBasic(sd_bus_message* m, char type) {
    T value{};
    check(sd_bus_message_read_basic(m, type, &value), "read");
    return json(value);
}

json readArray(sd_bus_message* m, const char* contents) {
    const bool dictionary = contents[0] == '{';
    json values = dictionary ? json::object() : json::array();
    check(sd_bus_message_enter_container(m, 'a', contents), "enter array");
    while (!atEnd(m)) {
        if (!dictionary) {
            values.push_back(readNext(m));
            continue;
        }
        char type = 0;
        const char* entry = nullptr;
        check(sd_bus_message_peek_type(m, &type, &entry), "peek");
        check(sd_bus_message_enter_container(m, 'e', entry), "enter entry");
        const json key = readNext(m);
        values[key.is_string() ? key.get<std::string>() : key.dump()] = readNext(m);
        check(sd_bus_message_exit_container(m), "exit entry");
    }
    check(sd_bus_message_exit_container(m), "exit array");
    return values;
}

json readInside(sd_bus_message* m, char type, const char* contents) {
    json values = json::array();
    check(sd_bus_message_enter_container(m, type, contents), "enter");
    while (!atEnd(m)) {
        values.push_back(readNext(m));
    }
    check(sd_bus_message_exit_container(m), "exit");
    return type == 'v' ? values.front() : values;
}

json readValue(sd_bus_message* m, char type, const char* contents) {
    switch (type) {
        case 's':
        case 'o':
        case 'g':
            return readBasic<const char*>(m, type);
        case 'b':
            return readBasic<int>(m, type) != 0;
        case 'y':
            return readBasic<std::uint8_t>(m, type);
        case 'n':
            return readBasic<std::int16_t>(m, type);
        case 'q':
            return readBasic<std::uint16_t>(m, type);
        case 'i':
            return readBasic<std::int32_t>(m, type);
        case 'u':
            return readBasic<std::uint32_t>(m, type);
        case 'x':
            return readBasic<std::int64_t>(m, type);
        case 't':
            return readBasic<std::uint64_t>(m, type);
        case 'd':
            return readBasic<double>(m, type);
        case 'a':
            return readArray(m, contents);
        case 'v':
        case 'r':
            return readInside(m, type, contents);
        default:
            check(sd_bus_message_skip(m, nullptr), "skip");
            return nullptr;
    }
}

}  // namespace

std::string argumentsAsJson(sd_bus_message* message) {
    json arguments = json::array();
    check(sd_bus_message_rewind(message, 1), "rewind");
    while (check(sd_bus_message_at_end(message, 1), "at end") == 0) {
        arguments.push_back(readNext(message));
    }
    check(sd_bus_message_rewind(message, 1), "rewind");
    return arguments.dump();
}

}  // namespace kaz::sim
