#include "dbus/variant.h"

#include "base/wipe.h"

#include <exception>
#include <memory>
#include <utility>

namespace kaz::dbus {

Variant::Variant(std::string signature, Writer writer)
    : signature_(std::move(signature)), writer_(std::move(writer)) {}

Variant::Variant(int value)
    : Variant("i", [value](sd_bus_message* message) { return write(message, value); }) {}

Variant::Variant(bool value)
    : Variant("b", [value](sd_bus_message* message) { return write(message, value); }) {}

Variant::Variant(std::string&& value)
    : Variant("s", [text = WipedString(std::move(value))](sd_bus_message* message) {
          return write(message, text.get());
      }) {}

Variant::Variant(const std::string& value) : Variant(std::string(value)) {}

Variant::Variant(const char* value) : Variant(std::string(value)) {}

Variant::Variant(Map value)
    : Variant("a{sv}", [map = std::make_shared<const Map>(std::move(value))](sd_bus_message* message) {
          return write(message, *map);
      }) {}

CodecResult<void> Variant::writeValue(sd_bus_message* message) const {
    try {
        return writer_(message);
    } catch (const std::exception& error) {
        return CodecError(error.what());
    }
}

template <>
CodecResult<void> write(sd_bus_message* message, const Variant& value) {
    if (const int r = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, value.signature().c_str());
        r < 0) {
        return sdBusError(r);
    }
    if (const auto written = value.writeValue(message); !written) {
        return nestedError("Unable to write to variant: ", written.error());
    }
    if (const int r = sd_bus_message_close_container(message); r < 0) {
        return sdBusError(r);
    }
    return {};
}

namespace {

CodecResult<void> writeEntry(sd_bus_message* message, const std::string& key, const Variant& value) {
    constexpr const char* prefix = "Unable to write value: ";
    if (const int r = sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv"); r < 0) {
        return sdBusError(r);
    }
    if (const auto written = write(message, key); !written) {
        return nestedError(prefix, written.error());
    }
    if (const auto written = write(message, value); !written) {
        return nestedError(prefix, written.error());
    }
    if (const int r = sd_bus_message_close_container(message); r < 0) {
        return sdBusError(r);
    }
    return {};
}

}  // namespace

template <>
CodecResult<void> write(sd_bus_message* message, const Variant::Map& value) {
    if (const int r = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}"); r < 0) {
        return sdBusError(r);
    }
    for (const auto& [key, variant] : value) {
        if (auto written = writeEntry(message, key, variant); !written) {
            return written;
        }
    }
    if (const int r = sd_bus_message_close_container(message); r < 0) {
        return sdBusError(r);
    }
    return {};
}

}  // namespace kaz::dbus
