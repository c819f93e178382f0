#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>

#include "base/checked.h"

namespace kaz::dbus {

template <typename Value>
Value readBasic(sd_bus_message* message, char type) {
    Value value{};
    checked(sd_bus_message_read_basic(message, type, &value), "sd_bus_message_read_basic");
    return value;
}

// Reads the next value, if it is neither a container nor a file descriptor, and passes it to `visit`: as text
// for 's', 'o' and 'g', as bool, as double, or as the integer of its width. Passes any other type to
// `otherwise` and does not read it. Throws std::system_error.
template <typename Visit, typename Otherwise>
auto visitBasic(sd_bus_message* message, char type, const Visit& visit, const Otherwise& otherwise) {
    switch (type) {
        case SD_BUS_TYPE_STRING:
        case SD_BUS_TYPE_OBJECT_PATH:
        case SD_BUS_TYPE_SIGNATURE:
            return visit(readBasic<const char*>(message, type));
        case SD_BUS_TYPE_BOOLEAN:
            return visit(readBasic<int>(message, type) != 0);
        case SD_BUS_TYPE_BYTE:
            return visit(readBasic<std::uint8_t>(message, type));
        case SD_BUS_TYPE_INT16:
            return visit(readBasic<std::int16_t>(message, type));
        case SD_BUS_TYPE_UINT16:
            return visit(readBasic<std::uint16_t>(message, type));
        case SD_BUS_TYPE_INT32:
            return visit(readBasic<std::int32_t>(message, type));
        case SD_BUS_TYPE_UINT32:
            return visit(readBasic<std::uint32_t>(message, type));
        case SD_BUS_TYPE_INT64:
            return visit(readBasic<std::int64_t>(message, type));
        case SD_BUS_TYPE_UINT64:
            return visit(readBasic<std::uint64_t>(message, type));
        case SD_BUS_TYPE_DOUBLE:
            return visit(readBasic<double>(message, type));
        default:
            return otherwise();
    }
}

}  // namespace kaz::dbus
